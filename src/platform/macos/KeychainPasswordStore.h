#pragma once

#include "core/authorization/PasswordStore.h"

namespace larkspur {

/// One generic password in the data-protection keychain, bound to the fingerprints that are enrolled now.
class KeychainPasswordStore final : public PasswordStore {
  public:
    bool isAvailable() const override;
    bool hasCopy() const override;
    Task<std::optional<Password>> read(QString reason) override;
    bool save(Password password) override;
    void remove() override;
};

} // namespace larkspur
