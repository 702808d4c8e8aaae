#pragma once

#include <QStringList>

#include <expected>

#include <sys/file.h>

namespace larkspur {

class ProcessTable;

/// A lock between processes: a file that a living process holds, and that names who took it. The system lets
/// go of it when the last process that has it open ends, however it ends: a file left by a crash is nobody's
/// lock and is taken over, unless a child that was given the descriptor lives on.
class LockFile {
  public:
    LockFile(LockFile &&other) noexcept;
    LockFile &operator=(LockFile &&other) noexcept;
    /// Lets go and removes the file, unless another has taken its place.
    ~LockFile() { release(); }

    struct Refusal {
        bool isHeld = false; ///< by another; any other refusal will not pass by waiting
        QString reason = {}; ///< one line of text
    };

    /// Takes the lock if it is free; does not wait. `lock`: the system's call, for tests.
    static std::expected<LockFile, Refusal> tryTake(const QString &path, int (*lock)(int, int) = ::flock);

    /// Those who go on holding the lock at the path although the process that took it has ended, "NAME (PID
    /// 12)" each. Nobody while that lives, and where the system does not tell.
    static QStringList orphansAt(const QString &path, const ProcessTable &processes);

    /// The open file, for a child that is to hold the lock as long as it lives.
    int descriptor() const { return m_file; }

  private:
    LockFile(QString path, int file);
    void release();

    QString m_path;
    int m_file; ///< open descriptor; -1 once moved from
};

} // namespace larkspur
