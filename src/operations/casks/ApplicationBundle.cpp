#include "operations/casks/ApplicationBundle.h"

#include "core/files/FileCalls.h"
#include "core/files/Trash.h"

#include <QFile>
#include <QFileInfo>

namespace larkspur {

bool isBundle(const QString &path) {
    const QFileInfo info(path);
    return info.isDir() && !info.isSymLink();
}

bool isOccupied(const QString &path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool moveToFreePlace(const QString &from, const QString &to) {
    return !isOccupied(to) && FileCalls().rename(QFile::encodeName(from), QFile::encodeName(to)) == 0;
}

std::expected<void, QString> throwAway(const QString &path, Trash &trash) {
    const auto taken = trash.take(path);
    return taken ? std::expected<void, QString>() : std::unexpected(taken.error());
}

std::expected<void, QString> returnToPlace(const QString &place, const QString &kept, Trash &trash) {
    if (isOccupied(place))
        if (const auto taken = throwAway(place, trash); !taken)
            return std::unexpected(
                QStringLiteral(
                    "%1 from before is kept at %2, because what stands in its place cannot be moved: %3")
                    .arg(QFileInfo(place).fileName(), kept, taken.error()));
    if (!moveToFreePlace(kept, place))
        return std::unexpected(QStringLiteral("%1 could not be put back; it is kept at %2").arg(place, kept));
    return {};
}

} // namespace larkspur
