#include "platform/macos/SystemTrash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace larkspur {

namespace {

/// In the trash of the home folder (`.Trash`) or of another volume (`.Trashes/501`).
bool isInTrash(const QString &path) {
    const QStringList folders = QFileInfo(QDir::cleanPath(path)).path().split(QLatin1Char('/'));
    return folders.contains(QStringLiteral(".Trash")) || folders.contains(QStringLiteral(".Trashes"));
}

} // namespace

std::expected<QString, QString> SystemTrash::take(const QString &path) {
    QFile file(path); // NSFileManager does the work, and fails where a volume has no trash
    if (!file.moveToTrash() || file.fileName() == path)
        return std::unexpected(QStringLiteral("%1 could not be moved to the trash").arg(path));
    if (const QString place = file.fileName(); !isInTrash(place)) {
        const bool isBack = QDir().rename(place, path);
        return std::unexpected(
            QStringLiteral("%1 could not be moved to the trash%2")
                .arg(path, isBack ? QString() : QStringLiteral("; it lies at %1 now").arg(place)));
    }
    return file.fileName();
}

} // namespace larkspur
