#include "core/trees/TreeReader.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <xxhash.h>

namespace larkspur {

namespace {

struct FreeState {
    void operator()(XXH3_state_t *state) const { XXH3_freeState(state); }
};

struct CloseFolder {
    void operator()(DIR *folder) const { ::closedir(folder); }
};

/// Hash of a file's contents; empty if it cannot be read. It guards against damage, not against malice, and
/// must keep up with the copying of the same bytes: the end of the file is not asked for, `size` tells it.
QByteArray hashOf(int folder, const char *name, qint64 size, QByteArray &buffer, XXH3_state_t *state) {
    const int file = ::openat(folder, name, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0)
        return {};
    XXH3_128bits_reset(state);
    ssize_t count = 0;
    for (qint64 done = 0; done < size; done += count) {
        count = ::read(file, buffer.data(), static_cast<std::size_t>(buffer.size()));
        if (count <= 0)
            break;
        XXH3_128bits_update(state, buffer.constData(), static_cast<std::size_t>(count));
    }
    const int reason = errno;
    ::close(file);
    errno = reason;
    if (count < 0)
        return {};
    XXH128_canonical_t digest{};
    XXH128_canonicalFromHash(&digest, XXH3_128bits_digest(state));
    return QByteArray(reinterpret_cast<const char *>(digest.digest), sizeof digest.digest).toHex();
}

QByteArray targetOf(int folder, const char *name, qint64 size) {
    QByteArray target(std::max<qint64>(size, 1) + 1, '\0');
    const ssize_t length = ::readlinkat(folder, name, target.data(), static_cast<std::size_t>(target.size()));
    return length < 0 ? QByteArray() : target.first(length);
}

bool isItselfOrParent(const char *name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

} // namespace

struct TreeReader::Findings {
    QList<TreeEntry> entries;
    qint64 bytesOnDisk = 0;
    QList<SharedFile> shared;
    QByteArray buffer;
    std::unique_ptr<XXH3_state_t, FreeState> hash{XXH3_createState()};
};

TreeReader::TreeReader(QByteArray root, TreeScan::Depth depth)
    : m_rootPath(std::move(root))
    , m_depth(depth)
    , m_root(::open(m_rootPath.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

TreeReader::~TreeReader() {
    if (m_root >= 0)
        ::close(m_root);
}

std::expected<TreeScan, QString> TreeReader::read() {
    if (m_root < 0) {
        fail({});
        return std::unexpected(*m_error);
    }
    m_folders.append(QByteArray());
    m_unfinished = 1;
    // Contents are read beside a program that copies them: one thread leaves it a processor.
    std::array<Findings, 2> findings;
    std::thread helper;
    if (m_depth == TreeScan::Depth::Names)
        helper = std::thread([this, &findings] { readFolders(&findings[1]); });
    readFolders(findings.data());
    if (helper.joinable())
        helper.join();
    if (m_error)
        return std::unexpected(*m_error);
    TreeScan scan;
    QList<SharedFile> shared;
    for (const Findings &found : findings) {
        scan.entries += found.entries;
        scan.bytesOnDisk += found.bytesOnDisk;
        shared += found.shared;
    }
    std::ranges::sort(shared);
    const auto repeated = std::ranges::unique(shared);
    for (auto file = shared.begin(); file != repeated.begin(); ++file)
        scan.bytesOnDisk += file->bytesOnDisk;
    std::ranges::sort(scan.entries, {}, &TreeEntry::path);
    return scan;
}

void TreeReader::readFolders(Findings *findings) {
    if (m_depth == TreeScan::Depth::Contents)
        findings->buffer.resize(256 * 1024);
    while (const auto folder = takeFolder()) {
        readFolder(*folder, findings);
        finishFolder();
    }
}

void TreeReader::readFolder(const QByteArray &folder, Findings *findings) {
    const int file = ::openat(m_root, folder.isEmpty() ? "." : folder.constData(),
                              O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    const std::unique_ptr<DIR, CloseFolder> open(file < 0 ? nullptr : ::fdopendir(file));
    if (!open) {
        fail(folder);
        return;
    }
    errno = 0;
    while (const dirent *entry = ::readdir(open.get())) {
        if (!isItselfOrParent(entry->d_name))
            readEntry(file, folder.isEmpty() ? QByteArray(entry->d_name) : folder + '/' + entry->d_name,
                      entry->d_name, findings);
        errno = 0;
    }
    if (errno != 0)
        fail(folder);
}

void TreeReader::readEntry(int folder, const QByteArray &path, const char *name, Findings *findings) {
    struct stat info{};
    if (::fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
        fail(path);
        return;
    }
    TreeEntry entry;
    entry.path = path;
    entry.mode = info.st_mode & 07777;
    if (S_ISREG(info.st_mode)) {
        entry.size = info.st_size;
        const qint64 bytesOnDisk = static_cast<qint64>(info.st_blocks) * 512;
        if (info.st_nlink < 2)
            findings->bytesOnDisk += bytesOnDisk;
        else
            findings->shared.append({static_cast<quint64>(info.st_dev), info.st_ino, bytesOnDisk});
        if (m_depth == TreeScan::Depth::Contents)
            entry.contents = hashOf(folder, name, entry.size, findings->buffer, findings->hash.get());
        if (m_depth == TreeScan::Depth::Contents && entry.contents.isEmpty()) {
            fail(path);
            return;
        }
    } else if (S_ISLNK(info.st_mode)) {
        entry.kind = TreeEntry::Kind::Link;
        entry.mode = 0;
        entry.contents = targetOf(folder, name, info.st_size);
    } else if (S_ISDIR(info.st_mode)) {
        entry.kind = TreeEntry::Kind::Folder;
        const std::scoped_lock lock(m_mutex);
        m_folders.append(path);
        ++m_unfinished;
        m_changed.notify_one();
    } else {
        return;
    }
    findings->entries.append(std::move(entry));
}

/// Waits for a folder; nothing once all are read or something went wrong.
std::optional<QByteArray> TreeReader::takeFolder() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_folders.isEmpty() || m_unfinished == 0 || m_error; });
    if (m_folders.isEmpty() || m_error)
        return std::nullopt;
    return m_folders.takeLast();
}

void TreeReader::finishFolder() {
    const std::scoped_lock lock(m_mutex);
    if (--m_unfinished == 0)
        m_changed.notify_all();
}

/// Keeps the system's reason for the first failure.
void TreeReader::fail(const QByteArray &path) {
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    const QByteArray whole = path.isEmpty() ? m_rootPath : m_rootPath + '/' + path;
    const std::scoped_lock lock(m_mutex);
    if (!m_error)
        m_error = QStringLiteral("%1: %2").arg(QFile::decodeName(whole), reason);
    m_changed.notify_all();
}

} // namespace larkspur
