#pragma once

#include "operations/package/PackageRun.h"

namespace larkspur {

/// The pin of a package, taken off for the time of its upgrade. A note in the data folder lets a later start
/// put it back if the program dies.
class HeldPin {
  public:
    HeldPin(PackageRun::Setting setting, QString noteFile, PackageTarget package);

    /// Fails if brew could not be run or was stopped.
    Task<Result<PackageEnd>> takeOff();
    /// Whatever became of the upgrade, also if it was stopped: what was held stays held. False if Homebrew
    /// refused.
    Task<bool> putBack();

    static bool hasLeftover(const QString &noteFile);
    /// Pins what a crash has left unpinned; removes the note.
    static Task<> recover(QString noteFile, PackageRun::Setting setting);

  private:
    PackageRun::Setting m_setting;
    QString m_noteFile;
    PackageTarget m_package;
};

} // namespace larkspur
