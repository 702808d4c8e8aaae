#include "core/authorization/SudoAuth.h"

#include "core/async/TaskScope.h"
#include "core/authorization/MemoryProtection.h"
#include "core/authorization/StoredPassword.h"

namespace larkspur {

SudoAuth::SudoAuth(Parts parts)
    : m_parts(parts) {}

Task<std::optional<Password>> SudoAuth::requestPassword(PasswordRequest request, StopToken stop) {
    const auto turn = co_await m_turn.acquire(stop);
    if (!turn)
        co_return std::nullopt;
    m_parts.memory.forbidDumps();
    // A finger that answers by habit would not see the warning of an unusual request.
    if (!request.isUnusual)
        if (std::optional<Password> copy = co_await m_parts.stored.unlock())
            co_return std::optional<Password>(copy);
    if (stop.stop_requested())
        co_return std::nullopt;
    m_prompt.emplace(Prompt{.request = presentable(std::move(request))});
    Completion<std::optional<Password>> answer = m_prompt->answer;
    const std::stop_callback onStop(stop, [this] { cancel(); });
    Q_EMIT changed();
    co_return co_await answer;
}

QString SudoAuth::note() const {
    return m_parts.stored.isEnabled()
               ? QStringLiteral("Your password authorizes this one action and refreshes the Touch ID copy "
                                "stored securely in your Keychain.")
               : QStringLiteral("Your password is used only to authorize this one action and is discarded as "
                                "soon as it finishes.");
}

void SudoAuth::proceed(Password typed) {
    if (!m_prompt || m_prompt->isVerifying)
        return;
    m_prompt->isVerifying = true;
    m_prompt->error.clear();
    Q_EMIT changed();
    if (m_prompt)
        m_parts.tasks.spawn(QStringLiteral("The check of a password"),
                            verify(std::move(typed), m_prompt->answer));
}

Task<> SudoAuth::verify(Password typed, Completion<std::optional<Password>> prompt) {
    const Verification verification = co_await m_parts.verifier.verify(typed);
    if (prompt.isComplete())
        co_return; // cancelled meanwhile
    if (verification == Verification::Differs) {
        m_prompt->isVerifying = false;
        m_prompt->error = QStringLiteral("That password was incorrect. Please try again.");
        Q_EMIT changed();
        co_return;
    }
    if (verification == Verification::Matches)
        m_parts.stored.refresh(typed);
    end(std::move(typed));
}

void SudoAuth::cancel() {
    if (m_prompt)
        end(std::nullopt);
}

void SudoAuth::end(std::optional<Password> answer) {
    Completion<std::optional<Password>> waiting = m_prompt->answer;
    m_prompt.reset();
    Q_EMIT changed();
    waiting.complete(std::move(answer));
}

} // namespace larkspur
