#pragma once

#include <QByteArray>

#include <sys/types.h>

namespace larkspur {

/// The system calls through which a file reaches the disk, each as the system defines it: -1 and `errno` tell
/// a failure. A double that fails at one of them takes its place in tests.
class FileCalls {
  public:
    virtual ~FileCalls() = default;

    /// A new file for writing; fails if the name is taken.
    virtual int create(const QByteArray &path) const;
    virtual ssize_t write(int file, const char *bytes, std::size_t size) const;
    virtual int setMode(int file, mode_t mode) const;
    /// Returns once the bytes are on the disk. Where the file system cannot promise that, it counts as done.
    virtual int sync(int file) const;
    /// The size that the file has on the disk.
    virtual off_t size(int file) const;
    virtual int close(int file) const;
    virtual int rename(const QByteArray &from, const QByteArray &to) const;
    /// Returns once the names in the folder are on the disk.
    virtual int syncFolder(const QByteArray &folder) const;
};

} // namespace larkspur
