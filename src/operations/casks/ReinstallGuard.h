#pragma once

#include "core/async/Task.h"
#include "operations/casks/MovedAside.h"

namespace larkspur {

/// The applications of a cask over all attempts at its reinstallation. They stand aside from the first to the
/// last: the first may make Homebrew forget the cask, so that no later one could tell what to protect.
class ReinstallGuard {
  public:
    explicit ReinstallGuard(CaskSetting setting)
        : m_setting(std::move(setting)) {}

    struct Readiness {
        QStringList lines = {}; ///< for the output
        QString failure = {};   ///< why there must be no attempt; empty if there may be
    };
    /// Before each attempt; always with the same token.
    Task<Readiness> prepare(PackageName token);
    /// Whether anything has been attempted.
    bool hasBegun() const { return m_aside != nullptr; }

    /// After the last attempt, which has reported success or not. Does nothing where there was none.
    Task<MovedAside::Conclusion> conclude(bool isReported);

  private:
    CaskSetting m_setting;
    std::shared_ptr<MovedAside> m_aside;
};

} // namespace larkspur
