#include "platform/macos/SystemTrash.h"

#include <QFile>

namespace larkspur {

std::expected<QString, QString> SystemTrash::take(const QString &path) {
    QFile file(path); // NSFileManager does the work, and fails where a volume has no trash
    if (!file.moveToTrash())
        return std::unexpected(QStringLiteral("%1 could not be moved to the trash").arg(path));
    return file.fileName();
}

} // namespace larkspur
