#pragma once

#include "core/trees/TreeScan.h"

#include <condition_variable>
#include <mutex>
#include <optional>

namespace larkspur {

/// Reads a tree of files with several threads at once: what it costs is mostly the system's answers.
/// Blocking; used once.
class TreeReader {
  public:
    TreeReader(QByteArray root, TreeScan::Depth depth);
    ~TreeReader();
    TreeReader(const TreeReader &) = delete;
    TreeReader &operator=(const TreeReader &) = delete;

    std::expected<TreeScan, QString> read();

  private:
    /// A file with several names, which takes its space once.
    struct SharedFile {
        quint64 device;
        quint64 inode;
        qint64 bytesOnDisk;
        auto operator<=>(const SharedFile &) const = default;
    };
    /// What one thread has found.
    struct Findings;

    void readFolders(Findings *findings);
    void readFolder(const QByteArray &folder, Findings *findings);
    void readEntry(int folder, const QByteArray &path, const char *name, Findings *findings);
    std::optional<QByteArray> takeFolder();
    void finishFolder();
    void fail(const QByteArray &path);

    QByteArray m_rootPath;
    TreeScan::Depth m_depth;
    int m_root;

    std::mutex m_mutex; ///< for all below
    std::condition_variable m_changed;
    QList<QByteArray> m_folders; ///< to be read, relative to the root
    int m_unfinished = 0;        ///< of those, and of those being read
    std::optional<QString> m_error;
};

} // namespace larkspur
