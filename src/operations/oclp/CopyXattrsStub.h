#pragma once

#include <QString>

namespace larkspur {

class Logger;

/// "OCLP mode": while this object lives, Homebrew's script that copies extended attributes is replaced by one
/// that does nothing, for machines on which copying them fails. Does nothing where this Homebrew has no such
/// script.
class CopyXattrsStub {
  public:
    CopyXattrsStub(const QString &prefix, Logger &logger);
    CopyXattrsStub(const CopyXattrsStub &) = delete;
    CopyXattrsStub &operator=(const CopyXattrsStub &) = delete;
    ~CopyXattrsStub();

    /// Whether a crash has left Homebrew's script aside.
    static bool hasLeftover(const QString &prefix);
    /// Puts it back.
    static void recover(const QString &prefix, Logger &logger);

  private:
    QString m_script; ///< empty if nothing was replaced
    Logger &m_logger;
};

} // namespace larkspur
