#pragma once

#include "operations/recovery/Leftover.h"

#include <QSet>

#include <optional>

namespace larkspur {

/// Formulae that were linked before an operation; nothing where that is not known.
using LinkedBefore = std::optional<QSet<QString>>;

/// While Homebrew reinstalls a formula its old keg waits beside the new one. Where that is cut off the old
/// keg comes back, unless the new one is in use already; its links are not made. Nothing is touched where
/// neither can be told, or while Homebrew works on the formula. Says what it does. False if something stays
/// as it is.
Task<bool> settleReinstalls(LinkedBefore linked, LockedWork work);

/// Old kegs that still wait, whoever had Homebrew reinstall them.
class ReinstallLeftover final : public Leftover {
  public:
    /// `noteFolder`: where notes of what was linked are kept.
    explicit ReinstallLeftover(QString noteFolder)
        : m_noteFolder(std::move(noteFolder)) {}
    bool exists(const QString &prefix) const override;
    Task<> putRight(LockedWork work) override;

  private:
    QString m_noteFolder;
};

} // namespace larkspur
