#pragma once

#include "core/async/Task.h"
#include "core/authorization/Password.h"

#include <optional>

namespace larkspur {

/// The system's own safe for one password, opened with a fingerprint.
class PasswordStore {
  public:
    virtual ~PasswordStore() = default;

    /// Whether this machine can tell its owner by a fingerprint now.
    virtual bool isAvailable() const = 0;
    /// Whether there is a copy; asks for no fingerprint.
    virtual bool hasCopy() const = 0;
    /// Asks for the fingerprint, with `reason` in the system's own prompt. Nothing if that fails or is
    /// cancelled.
    virtual Task<std::optional<Password>> read(QString reason) = 0;
    /// Replaces the copy; false if it could not be kept.
    virtual bool save(Password password) = 0;
    virtual void remove() = 0;
};

/// Where there is no such safe.
class NullPasswordStore final : public PasswordStore {
  public:
    bool isAvailable() const override { return false; }
    bool hasCopy() const override { return false; }
    Task<std::optional<Password>> read(QString) override { co_return std::nullopt; }
    bool save(Password) override { return false; }
    void remove() override {}
};

} // namespace larkspur
