#pragma once

#include "core/async/Completion.h"
#include "core/async/FairSemaphore.h"
#include "core/async/Task.h"
#include "core/authorization/Password.h"
#include "core/authorization/PasswordRequest.h"
#include "core/authorization/PasswordVerifier.h"

#include <QObject>

#include <optional>

namespace larkspur {

class MemoryProtection;
class StoredPassword;
class TaskScope;

/// The one place where the administrator password is asked for. An operation suspends itself here; the
/// password sheet or the terminal shows what `changed` announces and answers with `proceed` or `cancel`.
class SudoAuth : public QObject {
    Q_OBJECT
  public:
    struct Parts {
        PasswordVerifier &verifier;
        StoredPassword &stored;
        MemoryProtection &memory;
        TaskScope &tasks;
    };
    explicit SudoAuth(Parts parts);

    /// The verified password, from the stored copy or from the person; nothing if they cancel or `stop` is
    /// requested. An unusual request is always shown to the person. A second one waits until the first is
    /// answered.
    Task<std::optional<Password>> requestPassword(PasswordRequest request, StopToken stop = {});

    bool isPrompting() const { return m_prompt.has_value(); }
    /// What is asked for, fit to be shown.
    PasswordRequest request() const { return m_prompt ? m_prompt->request : PasswordRequest(); }
    /// Why the last answer was not taken; empty if there is nothing to say.
    QString error() const { return m_prompt ? m_prompt->error : QString(); }
    bool isVerifying() const { return m_prompt && m_prompt->isVerifying; }
    /// What the person should know about the use of the password.
    QString note() const;

    /// "Continue": the password is verified; a wrong one leaves the prompt open.
    void proceed(Password typed);
    /// Ends the prompt without a password, also while one is being verified.
    void cancel();

  Q_SIGNALS:
    void changed();

  private:
    struct Prompt {
        PasswordRequest request;
        QString error = {};
        bool isVerifying = false;
        Completion<std::optional<Password>> answer = {};
    };
    void end(std::optional<Password> answer);
    Task<> verify(Password typed, Completion<std::optional<Password>> prompt);

    Parts m_parts;
    FairSemaphore m_turn{1};
    std::optional<Prompt> m_prompt;
};

} // namespace larkspur
