#include "operations/installed/InstalledPackages.h"

#include "core/brew/PackageName.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace larkspur {

namespace {

QStringList foldersIn(const QString &path) {
    return QDir(path).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
}

QHash<QString, QStringList> versionFolders(const QString &root) {
    QHash<QString, QStringList> all;
    for (const QString &name : foldersIn(root))
        if (const QStringList versions = foldersIn(root + QLatin1Char('/') + name); !versions.isEmpty())
            all.insert(name, versions);
    return all;
}

/// Names of links, whether what they point at exists or not.
QStringList linksIn(const QString &path) {
    return QDir(path).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::NoSort);
}

QString newest(const QStringList &versions) {
    QCollator order{QLocale(QLocale::English)};
    order.setNumericMode(true);
    return versions.isEmpty() ? QString() : *std::ranges::max_element(versions, order);
}

} // namespace

InstalledPackages InstalledPackages::at(const QString &prefix) {
    InstalledPackages found;
    found.m_formulae = versionFolders(prefix + QStringLiteral("/Cellar"));
    found.m_casks = versionFolders(prefix + QStringLiteral("/Caskroom"));
    const QString opt = prefix + QStringLiteral("/opt");
    for (const QString &name : linksIn(opt)) {
        const QString keg = QFileInfo(opt + QLatin1Char('/') + name).symLinkTarget();
        if (!QFileInfo(keg).isDir())
            continue; // leads nowhere
        if (const QString target = QFileInfo(QFileInfo(keg).path()).fileName(); target != name)
            found.m_aliases.insert(name, target);
        else
            found.m_opt.insert(name, QFileInfo(keg).fileName());
    }
    const QString linked = prefix + QStringLiteral("/var/homebrew/linked");
    for (const QString &name : linksIn(linked))
        if (const QFileInfo keg(QFileInfo(linked + QLatin1Char('/') + name).symLinkTarget()); keg.isDir())
            found.m_linked.insert(name, keg.fileName());
    found.m_pinnedFormulae = linksIn(prefix + QStringLiteral("/var/homebrew/pinned"));
    found.m_pinnedCasks = linksIn(prefix + QStringLiteral("/var/homebrew/pinned_casks"));
    return found;
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

QStringList applicationsOf(const QString &prefix, const QString &token) {
    const QString home = prefix + QStringLiteral("/Caskroom/") + shortName(token);
    QStringList paths;
    for (const QString &version : foldersIn(home)) {
        const QDir staged(home + QLatin1Char('/') + version);
        for (const QString &name : staged.entryList({QStringLiteral("*.app")},
                                                    QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
            if (const QFileInfo link(staged.filePath(name)); link.isSymLink())
                paths.append(QDir::cleanPath(staged.absoluteFilePath(link.symLinkTarget())));
    }
    paths.removeDuplicates();
    return paths;
}

} // namespace larkspur
