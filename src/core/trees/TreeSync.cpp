#include "core/trees/TreeSync.h"

#include "core/files/FileCalls.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace larkspur {

namespace fs = std::filesystem;

namespace {

std::unexpected<QString> failureAt(const fs::path &path, int reason) {
    return std::unexpected(QStringLiteral("%1: %2").arg(QFile::decodeName(path.c_str()),
                                                        QString::fromLocal8Bit(std::strerror(reason))));
}

std::expected<void, QString> syncFile(const fs::path &path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0 && errno == EACCES)
        return {}; // written by the system's own copying tool, closed to everybody since
    const int result = file < 0 ? -1 : FileCalls().sync(file);
    const int reason = errno;
    if (file >= 0)
        ::close(file);
    return result == 0 ? std::expected<void, QString>() : failureAt(path, reason);
}

} // namespace

std::expected<void, QString> FileByFileSync::sync(const QString &folder) {
    const fs::path root(QFile::encodeName(folder).toStdString());
    std::error_code error;
    for (fs::recursive_directory_iterator entry(root, error), end; !error && entry != end;
         entry.increment(error))
        if (!entry->is_symlink(error) && (entry->is_regular_file(error) || entry->is_directory(error)))
            if (const auto synced = syncFile(entry->path()); !synced)
                return synced;
    if (error)
        return failureAt(root, error.value());
    if (const auto synced = syncFile(root); !synced)
        return synced;
    // The folder around may be reached through a link.
    if (FileCalls().syncFolder(root.parent_path().string().c_str()) != 0 && errno != EACCES)
        return failureAt(root.parent_path(), errno);
    return {};
}

} // namespace larkspur
