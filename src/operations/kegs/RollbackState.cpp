#include "operations/kegs/RollbackState.h"

#include "core/files/FolderNames.h"
#include "core/trees/LinkCheck.h"
#include "core/trees/TreeChanges.h"
#include "operations/installed/InstalledPackages.h"

#include <QDir>
#include <QFileInfo>

namespace larkspur {

std::expected<void, QString> checkPlaces(const RollbackNote &note) {
    for (const QString &path :
         {note.keg(), note.staged(), note.aside(), note.prefix + QStringLiteral("/opt")})
        if (const auto isOurs = withoutLinks(note.prefix, path); !isOurs)
            return isOurs;
    return {};
}

void makeOptLink(const RollbackNote &note, const QString &version) {
    const QString link = note.prefix + QStringLiteral("/opt/") + note.formula;
    const QString target = QStringLiteral("../Cellar/%1/%2").arg(note.formula, version);
    if (QFileInfo(link).isSymLink() &&
        QFileInfo(link).canonicalFilePath() ==
            QFileInfo(note.rack() + QLatin1Char('/') + version).canonicalFilePath())
        return;
    if (QFileInfo::exists(link) && !QFileInfo(link).isSymLink())
        return; // somebody's own
    QDir().mkpath(note.prefix + QStringLiteral("/opt"));
    QFile::remove(link);
    QFile::link(target, link);
}

namespace {

bool hasLinksIfItHad(const RollbackNote &note, const InstalledPackages &installed) {
    return installed.hasOptLink(note.formula) &&
           (!note.wasLinked || (installed.isLinked(note.formula) && !installed.isHalfLinked(note.formula)));
}

} // namespace

bool isInUse(const RollbackNote &note) {
    const auto installed = InstalledPackages::at(note.prefix);
    return installed && installed->currentVersion(note.formula) == note.version &&
           hasLinksIfItHad(note, *installed);
}

bool hasItsLinks(const RollbackNote &note) {
    const auto installed = InstalledPackages::at(note.prefix);
    const bool isRolledBack = note.version != note.previousVersion && installed &&
                              installed->currentVersion(note.formula) == note.version;
    return installed && !isRolledBack && hasLinksIfItHad(note, *installed);
}

bool isHalfLinked(const RollbackNote &note) {
    const auto installed = InstalledPackages::at(note.prefix);
    return installed && installed->isHalfLinked(note.formula);
}

bool hasItsPin(const RollbackNote &note) {
    if (!note.wasPinned)
        return true;
    const auto installed = InstalledPackages::at(note.prefix);
    return installed && installed->isPinned(note.formula, false);
}

void clearWorkFolder(const RollbackNote &note) {
    const QString gone = note.workFolder() + QStringLiteral("/gone");
    if (QDir(note.aside()).exists() && removeTree(note.prefix, gone))
        (void)moveTree(note.prefix, note.aside(), gone); // else it is removed where it lies
    if (removeTree(note.prefix, note.workFolder()))
        QDir(note.prefix).rmpath(QStringLiteral("var/larkspur/rollback")); // as far as it is empty
}

void clearAllButAside(const RollbackNote &note) {
    const QString aside = QFileInfo(note.aside()).fileName();
    for (const QString &name :
         QDir(note.workFolder()).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot))
        if (name != aside)
            (void)removeTree(note.prefix, note.workFolder() + QLatin1Char('/') + name);
}

std::expected<RollbackRemains, QString> RollbackRemains::of(const RollbackNote &note) {
    const auto installed = namesIn(note.rack());
    const auto aside = namesIn(note.aside());
    if (!installed || !aside)
        return std::unexpected(installed ? aside.error() : installed.error());
    return RollbackRemains{
        .installed = *installed, .aside = *aside, .isStaged = QDir(note.staged()).exists()};
}

QStringList RollbackRemains::installedSince(const RollbackNote &note) const {
    // Once all from before is back there can be more versions of it than the note knows.
    if (aside.isEmpty() && installed.contains(note.previousVersion))
        return {};
    QStringList others = installed;
    others.removeIf([&](const QString &version) {
        return version == note.previousVersion || aside.contains(version) ||
               (version == note.version && !isStaged);
    });
    return others;
}

} // namespace larkspur
