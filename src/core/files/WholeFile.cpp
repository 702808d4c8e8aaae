#include "core/files/WholeFile.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace larkspur {

namespace {

std::unexpected<ReadFailure> failure(const QString &path, const QString &reason, bool isMissing = false,
                                     bool mayPass = false) {
    return std::unexpected(ReadFailure{isMissing, QStringLiteral("%1: %2").arg(path, reason), mayPass});
}

} // namespace

std::expected<QByteArray, ReadFailure> readWholeFile(const QString &path, qint64 limit) {
    // Not blocking: a pipe in the place of a file would wait for a writer for ever.
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        return failure(path, QString::fromLocal8Bit(std::strerror(errno)), errno == ENOENT,
                       errno != ENOENT && errno != ELOOP && errno != ENXIO);
    QFile file;
    struct stat info{};
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return failure(path, file.errorString());
    if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode))
        return failure(path, QStringLiteral("this is no file"));
    if (info.st_size > limit)
        return failure(path, QStringLiteral("it is larger than such a file can be"));
    QByteArray bytes = file.read(limit + 1);
    if (file.error() != QFileDevice::NoError)
        return failure(path, file.errorString(), false, true);
    if (bytes.size() > limit)
        return failure(path, QStringLiteral("it is larger than such a file can be"));
    return bytes;
}

} // namespace larkspur
