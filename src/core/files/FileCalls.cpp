#include "core/files/FileCalls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace larkspur {

int FileCalls::create(const QByteArray &path) const {
    return ::open(path.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC | O_NOFOLLOW, 0666);
}

ssize_t FileCalls::write(int file, const char *bytes, std::size_t size) const {
    return ::write(file, bytes, size);
}

int FileCalls::setMode(int file, mode_t mode) const {
    return ::fchmod(file, mode);
}

int FileCalls::sync(int file) const {
#ifdef F_FULLFSYNC // where fsync alone stops at the drive's own memory
    if (::fcntl(file, F_FULLFSYNC) == 0)
        return 0;
#endif
    if (::fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP)
        return 0;
    return -1;
}

off_t FileCalls::size(int file) const {
    struct stat info{};
    return ::fstat(file, &info) == 0 ? info.st_size : -1;
}

int FileCalls::close(int file) const {
    return ::close(file);
}

int FileCalls::rename(const QByteArray &from, const QByteArray &to) const {
    return std::rename(from.constData(), to.constData());
}

int FileCalls::syncFolder(const QByteArray &folder) const {
    const int file = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0)
        return -1;
    const int result = sync(file);
    const int reason = errno;
    ::close(file);
    errno = reason;
    return result;
}

} // namespace larkspur
