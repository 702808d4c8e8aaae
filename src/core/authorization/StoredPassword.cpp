#include "core/authorization/StoredPassword.h"

#include "core/settings/Preferences.h"

namespace larkspur {

StoredPassword::StoredPassword(PasswordStore &store, PasswordVerifier &verifier, Preferences &preferences)
    : m_store(store)
    , m_verifier(verifier)
    , m_preferences(preferences) {}

bool StoredPassword::isEnabled() const {
    return m_preferences.boolean(keys::touchIDSudoAuth);
}

Task<std::optional<Password>> StoredPassword::unlock() {
    if (!isEnabled() || !m_store.hasCopy())
        co_return std::nullopt;
    std::optional<Password> copy = co_await m_store.read(QStringLiteral("authorize an administrator action"));
    if (!copy || co_await m_verifier.verify(*copy) == Verification::Differs)
        co_return std::nullopt;
    co_return std::optional<Password>(copy);
}

void StoredPassword::refresh(Password verified) {
    if (isEnabled())
        m_store.save(std::move(verified));
}

Task<StoredPassword::Enrolment> StoredPassword::enrol(Password typed) {
    if (co_await m_verifier.verify(typed) != Verification::Matches)
        co_return Enrolment::WrongPassword;
    if (!m_store.save(std::move(typed)))
        co_return Enrolment::NotSaved;
    m_preferences.set(keys::touchIDSudoAuth, true);
    co_return Enrolment::Saved;
}

void StoredPassword::forget() {
    m_preferences.set(keys::touchIDSudoAuth, false);
    m_store.remove();
}

} // namespace larkspur
