#include "core/lock/LockFile.h"

#include "core/process/ProcessTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
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

/// Only one of the system's reasons means that somebody holds the lock.
LockFile::Refusal refusal(const QString &path) {
    const int reason = errno;
    return {.isHeld = reason == EWOULDBLOCK,
            .reason = QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(reason)))};
}

/// For those who wait. On a full disk they are not told, and the lock holds all the same.
void nameOwner(int file) {
    const QByteArray id = QByteArray::number(::getpid()) + '\n';
    if (::ftruncate(file, 0) == 0) [[maybe_unused]]
        const auto written = ::write(file, id.constData(), static_cast<std::size_t>(id.size()));
}

bool isAlive(qint64 process) {
    return ::kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
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
    // Before letting go: afterwards it could be another's. It is already if somebody removed the held one.
    if (isFileAt(m_file, QFile::encodeName(m_path)))
        QFile::remove(m_path);
    ::close(std::exchange(m_file, -1));
}

std::expected<LockFile, LockFile::Refusal> LockFile::tryTake(const QString &path, int (*lock)(int, int)) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QByteArray name = QFile::encodeName(path);
    constexpr int attempts = 10;
    for (int i = 0; i < attempts; ++i) {
        const int file = ::open(name.constData(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (file < 0)
            return std::unexpected(refusal(path));
        int result = 0;
        do
            result = lock(file, LOCK_EX | LOCK_NB);
        while (result != 0 && errno == EINTR);
        if (result != 0) {
            const Refusal why = refusal(path);
            ::close(file);
            return std::unexpected(why);
        }
        if (isFileAt(file, name)) {
            nameOwner(file);
            return LockFile(path, file);
        }
        ::close(file);
    }
    return std::unexpected(Refusal{.isHeld = true, .reason = {}}); // it changes hands all the time
}

QStringList LockFile::orphansAt(const QString &path, const ProcessTable &processes) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    constexpr qint64 longest = 32; // bytes of a process number
    const qint64 owner = file.read(longest).trimmed().toLongLong();
    if (owner <= 0 || isAlive(owner))
        return {};
    QStringList names;
    for (const qint64 process : processes.holdersOf(file.handle()))
        names.append(QStringLiteral("%1 (PID %2)").arg(processes.nameOf(process)).arg(process));
    return names;
}

} // namespace larkspur
