#pragma once

#include "operations/installed/InstalledPackages.h"
#include "operations/recovery/CrashNote.h"
#include "operations/recovery/InterruptedReinstall.h"
#include "operations/recovery/NoteLeftover.h"

namespace larkspur {

/// Formulae that lose their links when Homebrew is killed in the middle of a change. A note of what was
/// linked lets a later operation link them again if the program dies as well.
class LostLinks {
  public:
    struct Names {
        QStringList linked;
        QStringList whole; ///< those of them none of whose programs lacked its link
    };

    /// What is linked before an operation; `noteFolder`: where the note of it is kept.
    LostLinks(const InstalledPackages &before, const QString &prefix, const QString &noteFolder);

    /// Why there is no note, in one line; only the end of the operation repairs then. Empty if all is well.
    const QString &complaint() const { return m_complaint; }

    /// Settles reinstallations that were cut off, and links again what is installed and was linked before,
    /// where some of the links are gone too. False if that failed for one: the output says so,
    /// and the next operation tries again.
    Task<bool> relink(LockedWork work) const;

    /// What notes that stand say was linked; nothing if there is none.
    static LinkedBefore notedIn(const QString &noteFolder, const QString &prefix);

  private:
    Names m_names;
    QString m_complaint;
    std::optional<CrashNote> m_note;
};

/// The notes of operations whose program died.
class LostLinksLeftover final : public NoteLeftover {
  public:
    explicit LostLinksLeftover(const QString &noteFolder);

  protected:
    Task<Settled> settle(CrashNote note, LockedWork work) override;
};

} // namespace larkspur
