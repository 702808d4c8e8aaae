#include "core/files/Trash.h"

#include <QDir>
#include <QFileInfo>
#include <QUuid>

namespace larkspur {

std::expected<QString, QString> NullTrash::take(const QString &path) {
    return std::unexpected(QStringLiteral("%1: this system has no trash").arg(path));
}

std::expected<QString, QString> FolderTrash::take(const QString &path) {
    const QString place = m_folder + QLatin1Char('/') + QUuid::createUuid().toString(QUuid::WithoutBraces) +
                          QLatin1Char('-') + QFileInfo(path).fileName();
    if (!QDir().mkpath(m_folder) || !QDir().rename(path, place))
        return std::unexpected(QStringLiteral("%1 could not be moved to %2").arg(path, m_folder));
    return place;
}

} // namespace larkspur
