#pragma once

#include "operations/casks/CaskSetting.h"
#include "operations/recovery/NoteLeftover.h"

namespace larkspur {

/// What a crash, or a failure to put it back, has left aside. Where it cannot be told whether Homebrew has
/// come to the end of its reinstallation, both applications stay.
class MovedAsideLeftover final : public NoteLeftover {
  public:
    /// `prefix` in the setting is not read: the recovery knows it.
    explicit MovedAsideLeftover(CaskSetting setting);

  protected:
    Task<Settled> settle(CrashNote note, LockedWork work) override;

  private:
    CaskSetting m_setting;
};

} // namespace larkspur
