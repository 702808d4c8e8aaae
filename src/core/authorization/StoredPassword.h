#pragma once

#include "core/authorization/PasswordStore.h"
#include "core/authorization/PasswordVerifier.h"

namespace larkspur {

class Preferences;

/// The copy of the password that a fingerprint unlocks, and the preference that decides about it.
class StoredPassword {
  public:
    enum class Enrolment { Saved, WrongPassword, NotSaved };

    StoredPassword(PasswordStore &store, PasswordVerifier &verifier, Preferences &preferences);

    bool isAvailable() const { return m_store.isAvailable(); }
    bool isEnabled() const;
    bool hasCopy() const { return m_store.hasCopy(); }

    /// The copy, if it is enabled, was unlocked, and still is the account's password.
    Task<std::optional<Password>> unlock();
    /// Keeps a password that was just verified, if the copy is enabled.
    void refresh(Password verified);
    /// Verifies and keeps a password and turns the preference on; it stays as it was if either fails.
    Task<Enrolment> enrol(Password typed);
    /// Turns the preference off and removes the copy.
    void forget();

  private:
    PasswordStore &m_store;
    PasswordVerifier &m_verifier;
    Preferences &m_preferences;
};

} // namespace larkspur
