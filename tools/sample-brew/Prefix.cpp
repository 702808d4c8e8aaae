#include "Prefix.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>

#include <algorithm>

namespace sample {

namespace {

void writeFile(const QString &path, const QByteArray &bytes, bool executable = false) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(bytes);
    if (executable)
        file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther);
}

QJsonObject readObject(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

void writeObject(const QString &path, const QJsonObject &object) {
    writeFile(path, QJsonDocument(object).toJson());
}

void replaceLink(const QString &link, const QString &target) {
    QDir().mkpath(QFileInfo(link).absolutePath());
    QFile::remove(link);
    QFile::link(QFileInfo(link).dir().relativeFilePath(target), link);
}

/// What Homebrew adds to the names of the old folders while it installs a new version.
const QString upgrading = QStringLiteral(".upgrading");
/// And to that of a keg while it installs the same formula again.
const QString reinstalling = QStringLiteral(".reinstall");

void copyFolder(const QString &from, const QString &to) {
    QDir().mkpath(to);
    QDirIterator entries(from, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QString target = to + path.mid(from.size());
        if (entries.fileInfo().isDir())
            QDir().mkpath(target);
        else if (QDir().mkpath(QFileInfo(target).path()))
            QFile::copy(path, target);
    }
}

QStringList sortedFolders(const QString &path) {
    QStringList names = QDir(path).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCollator collator{QLocale(QLocale::English)};
    collator.setNumericMode(true);
    std::ranges::sort(names, collator);
    return names;
}

/// Bytes that no file system compresses away, the same for the same name.
QByteArray payload(const QString &seed, int kilobytes) {
    QRandomGenerator generator(static_cast<quint32>(qHash(seed)));
    QByteArray bytes(static_cast<qsizetype>(kilobytes) * 1024, Qt::Uninitialized);
    generator.fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
    return bytes;
}

QByteArray infoPlist(const Cask &cask, const QString &version) {
    const QString shortVersion = version.section(QLatin1Char(','), 0, 0);
    return QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
                          "  <key>CFBundleIdentifier</key>\n  <string>com.example.%1</string>\n"
                          "  <key>CFBundleShortVersionString</key>\n  <string>%2</string>\n"
                          "  <key>CFBundleVersion</key>\n  <string>%3</string>\n</dict>\n</plist>\n")
        .arg(cask.token, shortVersion, QString(shortVersion).remove(QLatin1Char('.')))
        .toUtf8();
}

} // namespace

Prefix::Prefix(QString path)
    : m_path(std::move(path)) {}

QString Prefix::applications() const {
    return QFileInfo(m_path).absolutePath() + QStringLiteral("/Applications");
}

QString Prefix::keg(const Formula &formula, const QString &version) const {
    return cellar() + QLatin1Char('/') + formula.name + QLatin1Char('/') + version;
}

QStringList Prefix::versions(const Formula &formula) const {
    QStringList versions = sortedFolders(cellar() + QLatin1Char('/') + formula.name);
    versions.removeIf([](const QString &name) { return name.endsWith(reinstalling); });
    return versions;
}

QString Prefix::linkedVersion(const Formula &formula) const {
    return QFileInfo(QFile::symLinkTarget(m_path + QStringLiteral("/var/homebrew/linked/") + formula.name))
        .fileName();
}

QJsonObject Prefix::receipt(const Formula &formula, const QString &version) const {
    return readObject(keg(formula, version) + QStringLiteral("/INSTALL_RECEIPT.json"));
}

void Prefix::installKeg(const Formula &formula, const QString &version, bool onRequest,
                        const QDateTime &when) {
    // Poured aside and moved into place, so that a kill half-way leaves no half keg.
    const QString staged = m_path + QStringLiteral("/var/homebrew/tmp/") + formula.name;
    QDir(staged).removeRecursively();
    writeFile(staged + QStringLiteral("/bin/") + formula.name,
              QStringLiteral("#!/bin/sh\necho \"%1 %2\"\n").arg(formula.name, version).toUtf8(), true);
    writeFile(staged + QStringLiteral("/share/man/man1/") + formula.name + QStringLiteral(".1"),
              QStringLiteral(".TH %1 1\n").arg(formula.name.toUpper()).toUtf8());
    writeFile(staged + QStringLiteral("/README.md"),
              QStringLiteral("# %1\n\n%2\n").arg(formula.name, formula.desc).toUtf8());
    writeFile(staged + QStringLiteral("/lib/") + formula.name + QStringLiteral(".data"),
              payload(formula.name + version, std::min(formula.kilobytes, 10'000)));
    writeFile(staged + QStringLiteral("/.brew/") + formula.name + QStringLiteral(".rb"),
              QStringLiteral("class Sample < Formula\n  version \"%1\"\nend\n").arg(version).toUtf8());
    writeObject(staged + QStringLiteral("/INSTALL_RECEIPT.json"),
                {{QStringLiteral("homebrew_version"), QStringLiteral("6.0.18")},
                 {QStringLiteral("installed_on_request"), onRequest},
                 {QStringLiteral("poured_from_bottle"), true},
                 {QStringLiteral("time"), when.toSecsSinceEpoch()},
                 {QStringLiteral("source"), QJsonObject{{QStringLiteral("tap"), formula.tap}}}});
    const QString place = keg(formula, version);
    QDir().mkpath(QFileInfo(place).absolutePath());
    QDir(place).removeRecursively();
    QDir().rename(staged, place);
    link(formula, version);
}

void Prefix::removeKeg(const Formula &formula, const QString &version) {
    if (linkedVersion(formula) == version || versions(formula).size() <= 1) {
        unlink(formula);
        QFile::remove(m_path + QStringLiteral("/opt/") + formula.name);
    }
    QDir(keg(formula, version)).removeRecursively();
    QDir().rmdir(cellar() + QLatin1Char('/') + formula.name);
}

void Prefix::link(const Formula &formula, const QString &version) {
    const QString place = keg(formula, version);
    replaceLink(m_path + QStringLiteral("/opt/") + formula.name, place);
    if (formula.kegOnly)
        return;
    replaceLink(m_path + QStringLiteral("/bin/") + formula.name,
                place + QStringLiteral("/bin/") + formula.name);
    replaceLink(m_path + QStringLiteral("/var/homebrew/linked/") + formula.name, place);
}

void Prefix::unlink(const Formula &formula) {
    for (const char *folder : {"/bin/", "/var/homebrew/linked/"})
        QFile::remove(m_path + QLatin1String(folder) + formula.name);
}

void Prefix::backUpKeg(const Formula &formula) {
    const QString opt = QFileInfo(m_path + QStringLiteral("/opt/") + formula.name).canonicalFilePath();
    if (opt.isEmpty())
        return;
    unlink(formula);
    QDir(opt + reinstalling).removeRecursively();
    QDir().rename(opt, opt + reinstalling);
}

void Prefix::purgeKegBackup(const Formula &formula) {
    const QString rack = cellar() + QLatin1Char('/') + formula.name + QLatin1Char('/');
    for (const QString &name : QDir(rack).entryList({QLatin1Char('*') + reinstalling}, QDir::Dirs))
        QDir(rack + name).removeRecursively();
}

QString Prefix::installedVersion(const Cask &cask) const {
    QStringList versions = sortedFolders(caskroom() + QLatin1Char('/') + cask.token);
    versions.removeIf([](const QString &name) { return name.startsWith(u'.') || name.endsWith(upgrading); });
    return versions.isEmpty() ? QString() : versions.last();
}

QString Prefix::appPath(const Cask &cask) const {
    return applications() + QLatin1Char('/') + cask.app;
}

QJsonObject Prefix::receipt(const Cask &cask) const {
    return readObject(caskroom() + QLatin1Char('/') + cask.token +
                      QStringLiteral("/.metadata/INSTALL_RECEIPT.json"));
}

void Prefix::installCask(const Cask &cask, const QString &version, const QDateTime &when) {
    const QString home = caskroom() + QLatin1Char('/') + cask.token;
    const QString staged = home + QLatin1Char('/') + version;
    const QString contents = staged + QLatin1Char('/') + cask.app + QStringLiteral("/Contents");
    QDir(staged).removeRecursively();
    writeFile(staged + QStringLiteral("/download.data"),
              payload(cask.token + version, std::min(cask.kilobytes, 10'000)));
    writeFile(contents + QStringLiteral("/Info.plist"), infoPlist(cask, version));
    writeFile(contents + QStringLiteral("/MacOS/") + cask.token, "#!/bin/sh\n", true);
    writeObject(home + QStringLiteral("/.metadata/") + version +
                    QStringLiteral("/20261101120000.000/Casks/") + cask.token + QStringLiteral(".json"),
                {});
    placeBundle(cask, staged);
    writeObject(home + QStringLiteral("/.metadata/INSTALL_RECEIPT.json"),
                {{QStringLiteral("homebrew_version"), QStringLiteral("6.0.18")},
                 {QStringLiteral("time"), when.toSecsSinceEpoch()},
                 {QStringLiteral("source"),
                  QJsonObject{{QStringLiteral("tap"), cask.tap}, {QStringLiteral("version"), version}}},
                 {QStringLiteral("uninstall_artifacts"),
                  QJsonArray{QJsonObject{{QStringLiteral("app"), QJsonArray{cask.app}}}}}});
    writeObject(home + QStringLiteral("/.metadata/config.json"),
                {{QStringLiteral("default"), QJsonObject{{QStringLiteral("appdir"), applications()}}},
                 {QStringLiteral("env"), QJsonObject()},
                 {QStringLiteral("explicit"), QJsonObject()}});
}

void Prefix::placeBundle(const Cask &cask, const QString &staged) {
    const QString source = staged + QLatin1Char('/') + cask.app;
    const QString target = appPath(cask);
    if (!QDir(target).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
        QDir(target).removeRecursively();
    QDir().mkpath(target);
    for (const QString &name : QDir(source).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
        QDir().rename(source + QLatin1Char('/') + name, target + QLatin1Char('/') + name);
    QDir(source).removeRecursively();
    replaceLink(source, target);
}

void Prefix::backUpCask(const Cask &cask) {
    const QString home = caskroom() + QLatin1Char('/') + cask.token + QLatin1Char('/');
    const QString version = installedVersion(cask);
    const QString kept = home + version + QLatin1Char('/') + cask.app;
    QFile::remove(kept);
    copyFolder(appPath(cask), kept);
    for (const QString &name : QDir(appPath(cask)).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        QDir(appPath(cask) + QLatin1Char('/') + name).removeRecursively();
    for (const QString &folder : {home + version, home + QStringLiteral(".metadata/") + version})
        QDir().rename(folder, folder + upgrading);
}

void Prefix::purgeBackup(const Cask &cask) {
    const QString home = caskroom() + QLatin1Char('/') + cask.token + QLatin1Char('/');
    for (const QString &folder : {home, home + QStringLiteral(".metadata/")})
        for (const QString &name : QDir(folder).entryList({QLatin1Char('*') + upgrading}, QDir::Dirs))
            QDir(folder + name).removeRecursively();
}

void Prefix::restoreBackup(const Cask &cask) {
    const QString home = caskroom() + QLatin1Char('/') + cask.token + QLatin1Char('/');
    for (const QString &folder : {home, home + QStringLiteral(".metadata/")})
        for (const QString &name : QDir(folder).entryList({QLatin1Char('*') + upgrading}, QDir::Dirs))
            QDir().rename(folder + name, folder + name.chopped(upgrading.size()));
    placeBundle(cask, home + installedVersion(cask));
}

void Prefix::removeCask(const Cask &cask) {
    QDir(appPath(cask)).removeRecursively();
    QDir(caskroom() + QLatin1Char('/') + cask.token).removeRecursively();
}

QString Prefix::bundleVersion(const Cask &cask) const {
    QFile file(appPath(cask) + QStringLiteral("/Contents/Info.plist"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    const qsizetype key = text.indexOf(QLatin1String("CFBundleShortVersionString"));
    const qsizetype start = text.indexOf(QLatin1String("<string>"), key) + 8;
    return text.mid(start, text.indexOf(QLatin1String("</string>"), start) - start);
}

QString Prefix::pinPath(const QString &name, bool isCask) const {
    return m_path +
           (isCask ? QStringLiteral("/var/homebrew/pinned_casks/")
                   : QStringLiteral("/var/homebrew/pinned/")) +
           name;
}

bool Prefix::isPinned(const QString &name, bool isCask) const {
    return QFileInfo(pinPath(name, isCask)).isSymLink();
}

void Prefix::pin(const QString &name, bool isCask) {
    replaceLink(pinPath(name, isCask), (isCask ? caskroom() : cellar()) + QLatin1Char('/') + name);
}

void Prefix::unpin(const QString &name, bool isCask) {
    QFile::remove(pinPath(name, isCask));
}

QJsonObject Prefix::state() const {
    return readObject(m_path + QStringLiteral("/var/homebrew/sample-state.json"));
}

void Prefix::setState(const QJsonObject &state) const {
    writeObject(m_path + QStringLiteral("/var/homebrew/sample-state.json"), state);
}

QString Prefix::sizeText(const QString &folder) {
    qint64 bytes = 0;
    int files = 0;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        ++files;
        bytes += entries.fileInfo().isSymLink() ? 0 : entries.fileInfo().size();
    }
    const auto amount = static_cast<double>(bytes);
    const QString size = amount < 1e6 ? QString::number(amount / 1e3, 'f', 1) + QStringLiteral("KB")
                                      : QString::number(amount / 1e6, 'f', 1) + QStringLiteral("MB");
    return QStringLiteral("%1 files, %2").arg(files).arg(size);
}

bool createPrefix(const Catalogue &catalogue, const QString &path, const QString &brewExecutable) {
    Prefix prefix(path);
    QDir(path).removeRecursively();
    QDir(prefix.applications()).removeRecursively();
    // First of all what marks the folder as a sample: one that is half made may be replaced.
    if (!QDir().mkpath(path + QStringLiteral("/Library/sample")) ||
        !QDir().mkpath(path + QStringLiteral("/bin")) || !QDir().mkpath(prefix.cellar()) ||
        !QDir().mkpath(prefix.caskroom()))
        return false;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QJsonObject services;
    for (const Formula &formula : catalogue.formulae) {
        if (formula.installed.isEmpty())
            continue;
        prefix.installKeg(formula, formula.installed, !formula.dependency, now.addDays(-formula.days));
        if (formula.pinned)
            prefix.pin(formula.name, false);
        if (!formula.service.isEmpty())
            services.insert(formula.name, formula.service);
    }
    for (const Cask &cask : catalogue.casks)
        if (!cask.installed.isEmpty()) {
            prefix.installCask(cask, cask.installed, now.addDays(-cask.days));
            if (cask.behaviour == QLatin1String("removed-by-hand"))
                QDir(prefix.appPath(cask)).removeRecursively();
        }
    prefix.setState({{QStringLiteral("services"), services}});
    if (!QFile::link(brewExecutable, path + QStringLiteral("/Library/sample/sudo")))
        return false;
    return QFile::link(brewExecutable,
                       path + QStringLiteral("/bin/brew")); // last: its presence says all is there
}

} // namespace sample
