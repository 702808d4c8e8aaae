#include "operations/installed/InstalledPackages.h"

#include "core/brew/PackageName.h"
#include "core/files/FolderNames.h"
#include "operations/installed/KegPrograms.h"

#include <QCollator>
#include <QFile>

#include <algorithm>
#include <filesystem>

namespace larkspur {

namespace {

namespace fs = std::filesystem;

/// Thrown in this file only: what is installed cannot be known.
struct Unreadable {
    QString reason;
};

fs::path pathOf(const QString &text) {
    return QFile::encodeName(text).toStdString();
}

QString textOf(const fs::path &path) {
    return QFile::decodeName(path.c_str());
}

[[noreturn]] void fail(const fs::path &path, const std::error_code &error) {
    throw Unreadable{
        QStringLiteral("%1 cannot be read: %2").arg(textOf(path), QString::fromStdString(error.message()))};
}

/// Whether it is a folder, or leads to one. What is not there, and a link that leads nowhere, is none.
bool isFolder(const fs::path &path) {
    std::error_code error;
    const bool is = fs::is_directory(path, error);
    const bool leadsNowhere = error == std::errc::no_such_file_or_directory ||
                              error == std::errc::not_a_directory ||
                              error == std::errc::too_many_symbolic_link_levels;
    if (error && !leadsNowhere)
        fail(path, error);
    return is;
}

QStringList allIn(const fs::path &folder) {
    auto names = namesIn(textOf(folder));
    if (!names)
        throw Unreadable{names.error()};
    return std::move(*names);
}

/// What is installed may lie elsewhere, behind a link. One that leads nowhere says that something is
/// installed and not what.
bool isInstalledFolder(const fs::path &path) {
    std::error_code error;
    if (isFolder(path))
        return true;
    if (fs::is_symlink(fs::symlink_status(path, error)) && !fs::exists(path, error))
        fail(path, error ? error : std::make_error_code(std::errc::no_such_file_or_directory));
    return false;
}

QStringList foldersIn(const fs::path &folder) {
    QStringList names = allIn(folder);
    names.removeIf([&folder](const QString &name) { return !isInstalledFolder(folder / pathOf(name)); });
    return names;
}

QHash<QString, QStringList> versionFolders(const fs::path &root) {
    QHash<QString, QStringList> all;
    for (const QString &name : foldersIn(root))
        if (const QStringList versions = foldersIn(root / pathOf(name)); !versions.isEmpty())
            all.insert(name, versions);
    return all;
}

/// Calls `take(name, formula, version)` for each link that leads to a keg.
template <typename Take>
void forEachKegLink(const fs::path &folder, Take take) {
    for (const QString &name : allIn(folder)) {
        std::error_code error;
        const fs::path target = fs::read_symlink(folder / pathOf(name), error);
        const bool isNoLink =
            error == std::errc::invalid_argument || error == std::errc::no_such_file_or_directory;
        if (error && !isNoLink)
            fail(folder / pathOf(name), error);
        const fs::path keg = (folder / target).lexically_normal();
        if (!error && isFolder(keg))
            take(name, textOf(keg.parent_path().filename()), textOf(keg.filename()));
    }
}

QString newest(const QStringList &versions) {
    QCollator order{QLocale(QLocale::English)};
    order.setNumericMode(true);
    return versions.isEmpty() ? QString() : *std::ranges::max_element(versions, order);
}

} // namespace

const QString InstalledPackages::backupSuffix = QStringLiteral(".reinstall");

std::expected<InstalledPackages, QString> InstalledPackages::at(const QString &prefix) {
    if (prefix.isEmpty())
        return std::unexpected(QStringLiteral("it is not known where Homebrew lies"));
    try {
        return read(prefix);
    } catch (const Unreadable &failure) {
        return std::unexpected(failure.reason);
    }
}

InstalledPackages InstalledPackages::read(const QString &prefix) {
    const fs::path root = pathOf(prefix);
    if (!isFolder(root))
        fail(root, std::make_error_code(std::errc::not_a_directory));
    const fs::path records = root / "var" / "homebrew";
    InstalledPackages found;
    found.m_formulae = versionFolders(root / "Cellar");
    found.takeOutBackups();
    found.m_casks = versionFolders(root / "Caskroom");
    forEachKegLink(root / "opt",
                   [&found](const QString &name, const QString &formula, const QString &version) {
                       if (formula == name)
                           found.m_opt.insert(name, version);
                       else
                           found.m_aliases.insert(name, formula);
                   });
    forEachKegLink(records / "linked",
                   [&found](const QString &name, const QString &, const QString &version) {
                       found.m_linked.insert(name, version);
                   });
    for (auto linked = found.m_linked.cbegin(); linked != found.m_linked.cend(); ++linked)
        if (lacksPrograms(prefix, linked.key(), linked.value()))
            found.m_halfLinked.insert(linked.key());
    found.m_pinnedFormulae = allIn(records / "pinned");
    found.m_pinnedCasks = allIn(records / "pinned_casks");
    return found;
}

/// A keg that waits for the end of its reinstallation is no version of its own.
void InstalledPackages::takeOutBackups() {
    for (auto formula = m_formulae.begin(); formula != m_formulae.end();) {
        for (const QString &version : QStringList(*formula))
            if (version.endsWith(backupSuffix) && formula->removeOne(version))
                m_backups.insert(formula.key(), version.chopped(backupSuffix.size()));
        formula = formula->isEmpty() ? m_formulae.erase(formula) : std::next(formula);
    }
}

QStringList InstalledPackages::formulaVersions(const QString &name) const {
    const QString own = shortName(name);
    return m_formulae.value(own, m_formulae.value(m_aliases.value(own)));
}

QStringList InstalledPackages::caskVersions(const QString &token) const {
    return m_casks.value(shortName(token));
}

bool InstalledPackages::isPinned(const QString &name, bool isCask) const {
    return (isCask ? m_pinnedCasks : m_pinnedFormulae).contains(shortName(name));
}

QString InstalledPackages::currentVersion(const QString &formula) const {
    if (const QString linked = m_linked.value(formula, m_opt.value(formula)); !linked.isEmpty())
        return linked;
    return newest(formulaVersions(formula));
}

QMap<QString, QString> InstalledPackages::currentFormulae() const {
    QMap<QString, QString> versions;
    for (auto formula = m_formulae.cbegin(); formula != m_formulae.cend(); ++formula)
        versions.insert(formula.key(), currentVersion(formula.key()));
    for (auto backup = m_backups.cbegin(); backup != m_backups.cend(); ++backup)
        if (!versions.contains(backup.key()))
            versions.insert(backup.key(), backup.value());
    return versions;
}

QMap<QString, QString> InstalledPackages::currentCasks() const {
    QMap<QString, QString> versions;
    for (auto cask = m_casks.cbegin(); cask != m_casks.cend(); ++cask)
        versions.insert(cask.key(), newest(cask.value()));
    return versions;
}

QStringList InstalledPackages::formulaeNewSince(const InstalledPackages &earlier) const {
    QStringList names;
    for (auto formula = m_formulae.cbegin(); formula != m_formulae.cend(); ++formula)
        for (const QString &version : formula.value())
            if (!earlier.m_formulae.value(formula.key()).contains(version)) {
                names.append(formula.key());
                break;
            }
    names.sort();
    return names;
}

} // namespace larkspur
