#include "core/lock/LockFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace larkspur {

namespace {

/// Whether the open file is still the one at the path: its last holder may just have removed it.
bool isFileAt(int file, const QByteArray &path) {
    struct stat open{};
    struct stat there{};
    return ::fstat(file, &open) == 0 && ::stat(path.constData(), &there) == 0 &&
           open.st_ino == there.st_ino && open.st_dev == there.st_dev;
}

} // namespace

LockFile::LockFile(QString path, int file)
    : m_path(std::move(path))
    , m_file(file) {}

LockFile::LockFile(LockFile &&other) noexcept
    : m_path(std::move(other.m_path))
    , m_file(std::exchange(other.m_file, -1)) {}

LockFile &LockFile::operator=(LockFile &&other) noexcept {
    if (this != &other) {
        release();
        m_path = std::move(other.m_path);
        m_file = std::exchange(other.m_file, -1);
    }
    return *this;
}

void LockFile::release() {
    if (m_file < 0)
        return;
    QFile::remove(m_path); // before letting go: afterwards it could be another's
    ::close(std::exchange(m_file, -1));
}

std::optional<LockFile> LockFile::tryTake(const QString &path, Refusal &why) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QByteArray name = QFile::encodeName(path);
    constexpr int attempts = 10;
    for (int i = 0; i < attempts; ++i) {
        const int file = ::open(name.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (file < 0) {
            why = Refusal::NotWritable;
            return std::nullopt;
        }
        if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
            ::close(file);
            why = Refusal::HeldByAnother;
            return std::nullopt;
        }
        if (isFileAt(file, name))
            return LockFile(path, file);
        ::close(file);
    }
    why = Refusal::HeldByAnother;
    return std::nullopt;
}

} // namespace larkspur
