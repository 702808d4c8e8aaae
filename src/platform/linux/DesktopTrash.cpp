#include "platform/linux/DesktopTrash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <unistd.h>

namespace larkspur {

namespace {

QString homeTrash() {
    return QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           QStringLiteral("/Trash"));
}

/// Qt takes the working folder for the trash where it can make none, so one is made beforehand.
bool hasHomeTrash() {
    const auto isUsable = [](const QString &folder) {
        return QDir().mkpath(folder) && QFileInfo(folder).isWritable();
    };
    const QString trash = homeTrash();
    return QDir::isAbsolutePath(trash) && isUsable(trash + QStringLiteral("/files")) &&
           isUsable(trash + QStringLiteral("/info"));
}

} // namespace

bool isInTrash(const QString &path) {
    const QString user = QString::number(::getuid());
    const QString folder = QFileInfo(QDir::cleanPath(path)).path();
    return folder == homeTrash() + QStringLiteral("/files") ||
           folder.endsWith(QStringLiteral("/.Trash-%1/files").arg(user)) ||
           folder.endsWith(QStringLiteral("/.Trash/%1/files").arg(user));
}

std::expected<QString, QString> DesktopTrash::take(const QString &path) {
    if (!QFileInfo(path).isSymLink() && !QFileInfo::exists(path))
        return std::unexpected(QStringLiteral("%1 is not there").arg(path));
    if (!hasHomeTrash())
        return std::unexpected(QStringLiteral("%1: no trash can be made").arg(path));
    QFile file(path);
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
