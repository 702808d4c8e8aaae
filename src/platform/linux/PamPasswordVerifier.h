#pragma once

#include "core/authorization/SudoPasswordVerifier.h"

namespace larkspur {

/// Asks PAM, which a person may do about their own account; where it gives no answer, sudo.
class PamPasswordVerifier final : public PasswordVerifier {
  public:
    Task<Verification> verify(Password password) override;

  private:
    SudoPasswordVerifier m_sudo{QStringLiteral("/usr/bin/sudo")};
};

} // namespace larkspur
