#pragma once

#include "core/async/Task.h"
#include "core/authorization/Password.h"

namespace larkspur {

enum class Verification {
    Matches,
    Differs,
    CannotTell, ///< this system offers no way to find out; sudo itself will have the last word
};

/// Tells whether a password is the one of the person who is logged in.
class PasswordVerifier {
  public:
    virtual ~PasswordVerifier() = default;
    virtual Task<Verification> verify(Password password) = 0;
};

/// Where nothing can be verified.
class NullPasswordVerifier final : public PasswordVerifier {
  public:
    Task<Verification> verify(Password) override { co_return Verification::CannotTell; }
};

} // namespace larkspur
