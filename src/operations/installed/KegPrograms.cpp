#include "operations/installed/KegPrograms.h"

#include "core/files/FolderNames.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace larkspur {

namespace {

/// Nothing leads on from there, or it leads to another version.
bool isLost(const QString &link, const QString &rack, const QString &keg) {
    const QFileInfo info(link);
    if (!info.exists())
        return true;
    const QString target = info.isSymLink() ? QDir::cleanPath(info.symLinkTarget()) : QString();
    return target.startsWith(rack + QLatin1Char('/')) && !target.startsWith(keg + QLatin1Char('/'));
}

} // namespace

bool lacksPrograms(const QString &prefix, const QString &formula, const QString &version) {
    const QString rack = prefix + QStringLiteral("/Cellar/") + formula;
    const QString keg = rack + QLatin1Char('/') + version;
    for (const QString &folder : {QStringLiteral("/bin/"), QStringLiteral("/sbin/")}) {
        const QStringList names = namesIn(keg + folder).value_or(QStringList());
        // Homebrew links files, and no folders.
        if (std::ranges::any_of(names, [&](const QString &name) {
                return QFileInfo(keg + folder + name).isFile() && isLost(prefix + folder + name, rack, keg);
            }))
            return true;
    }
    return false;
}

} // namespace larkspur
