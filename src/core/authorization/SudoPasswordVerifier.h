#pragma once

#include "core/authorization/PasswordVerifier.h"

namespace larkspur {

/// Asks sudo itself, with the password on its standard input and nothing run.
class SudoPasswordVerifier final : public PasswordVerifier {
  public:
    /// `sudo`: the program's path. Where it does not exist, nothing can be told.
    explicit SudoPasswordVerifier(QString sudo);

    Task<Verification> verify(Password password) override;

  private:
    QString m_sudo;
};

} // namespace larkspur
