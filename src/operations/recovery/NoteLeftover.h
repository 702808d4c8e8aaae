#pragma once

#include "operations/recovery/CrashNote.h"
#include "operations/recovery/Leftover.h"

namespace larkspur {

/// What notes of one kind tell of. Each is settled for itself, the oldest first; those of another Homebrew
/// wait for it, and one that cannot be used is kept and said.
class NoteLeftover : public Leftover {
  public:
    bool exists(const QString &prefix) const override;
    bool concerns(const QString &prefix) const override;
    Task<> putRight(LockedWork work) override;

  protected:
    struct Notes {
        QString folder;
        QString kind;
        QString about;       ///< as in "A note about … cannot be used"
        QString advice = {}; ///< what a person can do where one cannot be used: a sentence
    };
    explicit NoteLeftover(Notes notes)
        : m_notes(std::move(notes)) {}

    enum class Settled {
        Done,     ///< the note can go
        Not,      ///< it waits for the next time, or the settling looks after it
        Unusable, ///< it makes no sense
    };
    /// Puts right what one note tells of. It is read as if a stranger had written it.
    virtual Task<Settled> settle(CrashNote note, LockedWork work) = 0;

  private:
    void keepUnusable(const CrashNote &note, const LockedWork &work) const;

    Notes m_notes;
};

} // namespace larkspur
