#include "core/files/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace larkspur {

namespace {

QString withReason(const QString &what) {
    return QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
}

/// Makes a folder and those above it that are missing; the names of all are on the disk then.
std::expected<void, QString> makeFolder(const QString &folder, const FileCalls &calls) {
    QStringList missing;
    for (QString path = folder; !QFileInfo::exists(path); path = QFileInfo(path).path())
        missing.prepend(path);
    for (const QString &path : missing) {
        if (!QDir().mkpath(path)) // another program may have made it since
            break;
        const QString parent = QFileInfo(path).path();
        if (calls.syncFolder(QFile::encodeName(parent)) != 0) {
            const QString reason = withReason(QStringLiteral("the folder %1 cannot be synced").arg(parent));
            QDir().rmdir(path); // or the next attempt would take it for one that is on the disk
            return std::unexpected(reason);
        }
    }
    if (!QFileInfo(folder).isDir())
        return std::unexpected(QStringLiteral("the folder %1 cannot be made").arg(folder));
    return {};
}

/// Where a link leads, whether there is something yet or not.
QString targetOf(QString path) {
    constexpr int mostLinks = 16;
    for (int i = 0; i < mostLinks && QFileInfo(path).isSymLink(); ++i)
        path = QFileInfo(path).symLinkTarget();
    return path;
}

std::optional<mode_t> modeFor(const QByteArray &path, QFile::Permissions permissions) {
    struct Bit {
        QFile::Permissions permission;
        mode_t mode;
    };
    static constexpr Bit bits[] = {
        {QFile::ReadOwner, 0400}, {QFile::WriteOwner, 0200}, {QFile::ExeOwner, 0100},
        {QFile::ReadGroup, 0040}, {QFile::WriteGroup, 0020}, {QFile::ExeGroup, 0010},
        {QFile::ReadOther, 0004}, {QFile::WriteOther, 0002}, {QFile::ExeOther, 0001},
    };
    if (permissions) {
        mode_t mode = 0;
        for (const Bit &bit : bits)
            mode |= permissions & bit.permission ? bit.mode : 0;
        return mode;
    }
    struct stat old{};
    return ::stat(path.constData(), &old) == 0 ? std::optional<mode_t>(old.st_mode & 07777) : std::nullopt;
}

/// The file in the making, beside the one that it will replace; removed unless it took its place.
class Successor {
  public:
    Successor(const QString &path, const FileCalls &calls)
        : m_calls(calls) {
        const QFileInfo info(path);
        constexpr int mostAttempts = 100; // a name is taken if an earlier program with this number died here
        for (int i = 0; i < mostAttempts && m_file < 0; ++i) {
            m_path = QFile::encodeName(
                QStringLiteral("%1/.%2.%3-%4.new").arg(info.path(), info.fileName()).arg(::getpid()).arg(i));
            m_file = m_calls.create(m_path);
            if (m_file < 0 && errno != EEXIST)
                break;
        }
        m_isThere = m_file >= 0;
    }
    ~Successor() {
        const int reason = errno;
        close();
        if (m_isThere)
            ::unlink(m_path.constData());
        errno = reason;
    }
    Successor(const Successor &) = delete;
    Successor &operator=(const Successor &) = delete;

    bool isOpen() const { return m_file >= 0; }

    bool write(const QByteArray &bytes) {
        qsizetype done = 0;
        while (done < bytes.size()) {
            const ssize_t count = m_calls.write(m_file, bytes.constData() + done,
                                                static_cast<std::size_t>(bytes.size() - done));
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0) {
                errno = count == 0 ? ENOSPC : errno;
                return false;
            }
            done += count;
        }
        return true;
    }
    bool setMode(mode_t mode) { return m_calls.setMode(m_file, mode) == 0; }
    /// A full disk or a lost server may show only here.
    bool settle(qint64 size) {
        if (m_calls.sync(m_file) != 0)
            return false;
        errno = EIO;
        return m_calls.size(m_file) == size && close() == 0;
    }
    bool replace(const QByteArray &path) {
        m_isThere = m_calls.rename(m_path, path) != 0;
        return !m_isThere;
    }

  private:
    int close() { return m_file < 0 ? 0 : m_calls.close(std::exchange(m_file, -1)); }

    const FileCalls &m_calls;
    QByteArray m_path;
    int m_file = -1;
    bool m_isThere = false;
};

/// The names of files in the making whose program is no more.
QStringList unfinishedFiles(const QString &folder) {
    static const QRegularExpression pattern(QStringLiteral("\\A\\..+\\.([0-9]{1,9})-[0-9]+\\.new\\z"));
    QStringList names;
    for (const QString &name :
         QDir(folder).entryList({QStringLiteral("*.new")}, QDir::Files | QDir::Hidden)) {
        const auto match = pattern.match(name);
        if (match.hasMatch() && ::kill(match.captured(1).toInt(), 0) != 0 && errno == ESRCH)
            names.append(name);
    }
    return names;
}

} // namespace

std::expected<void, QString> writeFileAtomically(const QString &path, const QByteArray &bytes,
                                                 QFile::Permissions permissions, const FileCalls &calls) {
    const QString target = targetOf(path);
    const QString folder = QFileInfo(target).absolutePath();
    if (const auto made = makeFolder(folder, calls); !made)
        return made;
    const QByteArray name = QFile::encodeName(target);
    const auto mode = modeFor(name, permissions);
    Successor file(target, calls);
    if (!file.isOpen() || (mode && !file.setMode(*mode)) || !file.write(bytes) ||
        !file.settle(bytes.size()) || !file.replace(name))
        return std::unexpected(withReason(path));
    if (calls.syncFolder(QFile::encodeName(folder)) != 0)
        return std::unexpected(
            withReason(QStringLiteral("%1 was written, but its folder not synced").arg(path)));
    return {};
}

void removeUnfinishedFiles(const QString &folder) {
    for (const QString &name : unfinishedFiles(folder))
        QFile::remove(folder + QLatin1Char('/') + name);
}

bool hasUnfinishedFiles(const QString &folder) {
    return !unfinishedFiles(folder).isEmpty();
}

} // namespace larkspur
