#include "core/trees/TreeScan.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fts.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

namespace larkspur {

namespace {

struct FreeState {
    void operator()(XXH3_state_t *state) const { XXH3_freeState(state); }
};

struct CloseTree {
    void operator()(FTS *tree) const { ::fts_close(tree); }
};

QString reason(const char *path) {
    return QStringLiteral("%1: %2").arg(QFile::decodeName(path),
                                        QString::fromLocal8Bit(std::strerror(errno)));
}

/// Hash of a file's contents; empty if it cannot be read. It guards against damage, not against malice, and
/// must keep up with the copying of the same bytes.
QByteArray hashOf(const char *path, QByteArray &buffer, XXH3_state_t *state) {
    const int file = ::open(path, O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0)
        return {};
    XXH3_128bits_reset(state);
    ssize_t count = 0;
    while ((count = ::read(file, buffer.data(), static_cast<std::size_t>(buffer.size()))) > 0)
        XXH3_128bits_update(state, buffer.constData(), static_cast<std::size_t>(count));
    ::close(file);
    if (count < 0)
        return {};
    XXH128_canonical_t digest{};
    XXH128_canonicalFromHash(&digest, XXH3_128bits_digest(state));
    return QByteArray(reinterpret_cast<const char *>(digest.digest), sizeof digest.digest).toHex();
}

QByteArray targetOf(const char *path, qint64 size) {
    QByteArray target(std::max<qint64>(size, 1) + 1, '\0');
    const ssize_t length = ::readlink(path, target.data(), static_cast<std::size_t>(target.size()));
    return length < 0 ? QByteArray() : target.first(length);
}

/// Entries of the manifest are separated by line feeds and blanks; a path may hold both.
QByteArray quoted(const QByteArray &text) {
    const bool isPlain = std::ranges::all_of(text, [](char c) { return c > ' ' && c < 127 && c != '%'; });
    if (isPlain)
        return text; // nearly every one
    return text.toPercentEncoding("/.-_+@", {}, '%');
}

} // namespace

std::expected<TreeScan, QString> TreeScan::of(const QString &folder, Depth depth) {
    QByteArray root = QFile::encodeName(folder);
    char *const roots[] = {root.data(), nullptr};
    const std::unique_ptr<FTS, CloseTree> tree(::fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr));
    if (!tree)
        return std::unexpected(reason(root.constData()));
    TreeScan scan;
    QSet<std::pair<quint64, quint64>> seen;
    const std::unique_ptr<XXH3_state_t, FreeState> state(XXH3_createState());
    QByteArray buffer(depth == Depth::Contents ? 256 * 1024 : 0, '\0');
    while (const FTSENT *node = ::fts_read(tree.get())) {
        if (node->fts_info == FTS_DNR || node->fts_info == FTS_ERR || node->fts_info == FTS_NS) {
            errno = node->fts_errno;
            return std::unexpected(reason(node->fts_path));
        }
        if (node->fts_info == FTS_DP || node->fts_level == 0)
            continue;
        const struct stat &info = *node->fts_statp;
        TreeEntry entry;
        entry.path = QByteArray(node->fts_path + root.size() + 1);
        entry.mode = info.st_mode & 07777;
        if (S_ISREG(info.st_mode)) {
            entry.size = info.st_size;
            if (info.st_nlink < 2 || !seen.contains({info.st_dev, info.st_ino}))
                scan.bytesOnDisk += static_cast<qint64>(info.st_blocks) * 512;
            if (info.st_nlink >= 2)
                seen.insert({info.st_dev, info.st_ino});
            if (depth == Depth::Contents) {
                entry.contents = hashOf(node->fts_accpath, buffer, state.get());
                if (entry.contents.isEmpty())
                    return std::unexpected(reason(node->fts_path));
            }
        } else if (S_ISLNK(info.st_mode)) {
            entry.kind = TreeEntry::Kind::Link;
            entry.mode = 0;
            entry.contents = targetOf(node->fts_accpath, info.st_size);
        } else if (S_ISDIR(info.st_mode)) {
            entry.kind = TreeEntry::Kind::Folder;
        } else {
            continue;
        }
        scan.entries.append(std::move(entry));
    }
    std::ranges::sort(scan.entries, {}, &TreeEntry::path);
    return scan;
}

bool TreeScan::matches(const TreeScan &other) const {
    return std::ranges::equal(entries, other.entries, [](const TreeEntry &left, const TreeEntry &right) {
        const bool contentsMatch =
            left.contents.isEmpty() || right.contents.isEmpty() || left.contents == right.contents;
        return left.kind == right.kind && left.mode == right.mode && left.size == right.size &&
               left.path == right.path && contentsMatch;
    });
}

QByteArray TreeScan::toText() const {
    QByteArray text;
    for (const TreeEntry &entry : entries)
        text += static_cast<char>(entry.kind) + QByteArray(" ") + QByteArray::number(entry.mode, 8) + ' ' +
                QByteArray::number(entry.size) + ' ' + quoted(entry.path) + ' ' + quoted(entry.contents) +
                '\n';
    return text + "end " + QByteArray::number(bytesOnDisk) + '\n';
}

std::expected<TreeScan, QString> TreeScan::fromText(const QByteArray &text) {
    TreeScan scan;
    bool isWhole = false;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2 && words[0] == "end") {
            scan.bytesOnDisk = words[1].toLongLong();
            isWhole = true;
        } else if (words.size() == 5 && words[0].size() == 1) {
            scan.entries.append({.kind = static_cast<TreeEntry::Kind>(words[0][0]),
                                 .mode = words[1].toUInt(nullptr, 8),
                                 .size = words[2].toLongLong(),
                                 .path = QByteArray::fromPercentEncoding(words[3]),
                                 .contents = QByteArray::fromPercentEncoding(words[4])});
        } else if (!line.isEmpty()) {
            return std::unexpected(QStringLiteral("the list of files is damaged"));
        }
    }
    if (!isWhole)
        return std::unexpected(QStringLiteral("the list of files is cut"));
    return scan;
}

} // namespace larkspur
