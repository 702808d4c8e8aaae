#pragma once

#include "operations/recovery/Leftover.h"

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

  private:
    QString m_script; ///< empty if nothing was replaced
    Logger &m_logger;
};

/// Homebrew's script that a crash has left aside.
class CopyXattrsLeftover final : public Leftover {
  public:
    bool exists(const QString &prefix) const override;
    Task<> putRight(LockedWork work) override;
};

} // namespace larkspur
