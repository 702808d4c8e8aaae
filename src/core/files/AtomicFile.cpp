#include "core/files/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace larkspur {

std::expected<void, QString> writeFileAtomically(const QString &path, const QByteArray &bytes,
                                                 QFile::Permissions permissions) {
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        return std::unexpected(QStringLiteral("the folder %1 cannot be made").arg(folder));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || (permissions && !file.setPermissions(permissions)) ||
        file.write(bytes) != bytes.size() || !file.commit())
        return std::unexpected(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return {};
}

} // namespace larkspur
