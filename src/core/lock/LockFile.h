#pragma once

#include <QString>

#include <optional>

namespace larkspur {

/// A lock between processes: a file that a living process holds. The system lets go of it when that process
/// ends, however it ends, so that a file left by a crash is nobody's lock and is taken over.
class LockFile {
  public:
    LockFile(LockFile &&other) noexcept;
    LockFile &operator=(LockFile &&other) noexcept;
    /// Lets go and removes the file.
    ~LockFile() { release(); }

    enum class Refusal { HeldByAnother, NotWritable };

    /// Takes the lock if it is free; does not wait.
    static std::optional<LockFile> tryTake(const QString &path, Refusal &why);

  private:
    LockFile(QString path, int file);
    void release();

    QString m_path;
    int m_file; ///< open descriptor; -1 once moved from
};

} // namespace larkspur
