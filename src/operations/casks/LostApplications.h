#pragma once

#include "operations/casks/CaskUpgrade.h"
#include "operations/recovery/CrashNote.h"
#include "operations/recovery/NoteLeftover.h"

namespace larkspur {

/// Applications of casks that are half or not there when Homebrew is killed in the middle of an upgrade. A
/// note of what was there lets a later operation put them back if the program dies as well.
class LostApplications {
  public:
    /// What is there before an upgrade of these casks. Blocking.
    static LostApplications of(const QStringList &tokens, const CaskSetting &setting);

    /// What is not protected and why, in lines of text; empty if all is well.
    const QStringList &complaints() const { return m_complaints; }

    /// Puts right what Homebrew has not come to the end of, and says so. False if it had to.
    Task<bool> putBack(LockedWork work) const;

  private:
    explicit LostApplications(CaskSetting setting)
        : m_setting(std::move(setting)) {}

    CaskSetting m_setting;
    QList<CaskUpgrade> m_upgrades;
    QStringList m_complaints;
    std::optional<CrashNote> m_note;
};

/// The notes of operations whose program died.
class LostApplicationsLeftover final : public NoteLeftover {
  public:
    /// `prefix` in the setting is not read: the recovery knows it.
    explicit LostApplicationsLeftover(CaskSetting setting);

  protected:
    Task<Settled> settle(CrashNote note, LockedWork work) override;

  private:
    CaskSetting m_setting;
};

} // namespace larkspur
