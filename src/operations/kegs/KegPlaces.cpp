#include "operations/kegs/KegPlaces.h"

#include "core/files/FolderNames.h"

#include <QDir>
#include <QUuid>

namespace larkspur {

namespace {

const QString partialPrefix = QStringLiteral(".partial-");
const QString discardedPrefix = QStringLiteral(".discarded-");
const QString manifestSuffix = QStringLiteral(".files");
const QString earlierSuffix = QStringLiteral(".earlier");

QString fresh(const QString &folder, const QString &prefix) {
    return folder + QLatin1Char('/') + prefix + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

// What a link leads to is somebody's own.
constexpr auto ownFolders = QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks;

QStringList racks(const QString &folder) {
    return QDir(folder).entryList(ownFolders);
}

} // namespace

QString KegPlaces::index() const {
    return m_folder + QStringLiteral("/index.json");
}

QString KegPlaces::indexLock() const {
    return m_folder + QStringLiteral("/index.lock");
}

QString KegPlaces::rack(const QString &formula) const {
    return m_folder + QLatin1Char('/') + formula;
}

QString KegPlaces::copy(const QString &formula, const QString &version) const {
    return rack(formula) + QLatin1Char('/') + version;
}

QString KegPlaces::manifest(const QString &formula, const QString &version) const {
    return rack(formula) + QStringLiteral("/.") + version + manifestSuffix;
}

QString KegPlaces::earlier(const QString &formula, const QString &version) const {
    return rack(formula) + QStringLiteral("/.") + version + earlierSuffix;
}

QString KegPlaces::partial() const {
    return fresh(m_folder, partialPrefix);
}

QString KegPlaces::manifestOfPartial(const QString &partial) {
    return partial + manifestSuffix;
}

QString KegPlaces::discarded() const {
    return fresh(m_folder, discardedPrefix);
}

QString KegPlaces::unreadable() const {
    if (const auto names = namesIn(m_folder); !names)
        return names.error();
    for (const QString &formula : racks(m_folder))
        if (const auto names = namesIn(rack(formula)); !names)
            return names.error();
    return {};
}

QList<KegPlaces::Copy> KegPlaces::copies() const {
    QList<Copy> found;
    for (const QString &formula : racks(m_folder))
        for (const QString &version : QDir(rack(formula)).entryList(ownFolders))
            found.append({formula, version});
    return found;
}

QList<KegPlaces::Copy> KegPlaces::earlierCopies() const {
    QList<Copy> found;
    for (const QString &formula : racks(m_folder))
        for (const QString &name :
             QDir(rack(formula)).entryList({QLatin1String(".*") + earlierSuffix}, ownFolders | QDir::Hidden))
            found.append({formula, name.mid(1).chopped(earlierSuffix.size())});
    return found;
}

QStringList KegPlaces::underWay() const {
    QStringList paths;
    for (const QString &name : QDir(m_folder).entryList(ownFolders | QDir::Files | QDir::Hidden))
        if (name.startsWith(partialPrefix) || name.startsWith(discardedPrefix))
            paths.append(m_folder + QLatin1Char('/') + name);
    return paths;
}

} // namespace larkspur
