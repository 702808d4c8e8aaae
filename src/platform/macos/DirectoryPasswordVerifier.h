#pragma once

#include "core/authorization/PasswordVerifier.h"

namespace larkspur {

/// Asks the local directory node about the person who is logged in.
class DirectoryPasswordVerifier final : public PasswordVerifier {
  public:
    Task<Verification> verify(Password password) override;
};

} // namespace larkspur
