#include "platform/linux/VolumeSync.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace larkspur {

std::expected<void, QString> VolumeSync::sync(const QString &folder) {
    const int file = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isDone = file >= 0 && ::syncfs(file) == 0;
    const int reason = errno;
    if (file >= 0)
        ::close(file);
    if (isDone)
        return {};
    return std::unexpected(
        QStringLiteral("%1: %2").arg(folder, QString::fromLocal8Bit(std::strerror(reason))));
}

} // namespace larkspur
