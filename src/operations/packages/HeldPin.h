#pragma once

#include "operations/recovery/NoteLeftover.h"
#include "operations/run/PackageTarget.h"

namespace larkspur {

/// The pin of a package, taken off for the time of its upgrade. A note lets a later operation put it back if
/// the program dies.
class HeldPin {
  public:
    HeldPin(LockedWork work, QString noteFolder, PackageTarget package);

    /// Fails if brew could not be run or was stopped, or if no note of the pin could be made: it then holds.
    Task<Result<bool>> takeOff();
    /// Whatever became of the upgrade, also if it was stopped: what was held stays held. False if Homebrew
    /// refused: the output says so, and the next operation tries again.
    Task<bool> putBack();

  private:
    LockedWork m_work;
    QString m_noteFolder;
    PackageTarget m_package;
    std::optional<CrashNote> m_note;
};

/// Pins that a crash has left off.
class HeldPinLeftover final : public NoteLeftover {
  public:
    explicit HeldPinLeftover(const QString &noteFolder);

  protected:
    Task<Settled> settle(CrashNote note, LockedWork work) override;
};

} // namespace larkspur
