#include "cli/PasswordPrompt.h"

#include "cli/ControllingTerminal.h"
#include "cli/Terminal.h"
#include "core/async/TaskScope.h"
#include "core/authorization/SudoAuth.h"

namespace larkspur::cli {

PasswordPrompt::PasswordPrompt(SudoAuth &auth, const Terminal &terminal, TaskScope &tasks, StopToken stop)
    : m_auth(auth)
    , m_terminal(terminal)
    , m_tasks(tasks)
    , m_stop(std::move(stop)) {
    connect(&auth, &SudoAuth::changed, this, &PasswordPrompt::onChanged);
}

void PasswordPrompt::onChanged() {
    if (!m_auth.isPrompting() || m_auth.isVerifying() || m_isAsking)
        return;
    if (!ControllingTerminal::exists()) {
        m_terminal.error(QStringLiteral("The administrator password cannot be asked for without a terminal. "
                                        "Run the command in one, or use the window."));
        m_auth.cancel();
        return;
    }
    m_isAsking = true;
    m_tasks.spawn(QStringLiteral("The password prompt"), ask());
}

/// What stands above the question.
QString PasswordPrompt::explanation() const {
    const PasswordRequest request = m_auth.request();
    QString text = QStringLiteral("\nAdministrator Password Required\n") + request.reason + QLatin1Char('\n');
    const auto add = [&text](const QString &name, const QString &value) {
        if (!value.isEmpty())
            text += QStringLiteral("  %1  ").arg(name, -7) + value + QLatin1Char('\n');
    };
    add(QStringLiteral("Package"), request.package);
    add(QStringLiteral("Command"), request.command);
    add(QStringLiteral("Output"), request.trigger);
    text += m_auth.note() + QLatin1Char('\n');
    if (const QString warning = warningOf(request); !warning.isEmpty())
        text += QStringLiteral("Warning: ") + warning + QLatin1Char('\n');
    return text;
}

Task<> PasswordPrompt::ask() {
    const QString above = m_auth.error().isEmpty() ? explanation() : m_auth.error() + QLatin1Char('\n');
    std::optional<QString> line = co_await ControllingTerminal::readLine(
        above + QStringLiteral("Password (empty to cancel): "), ControllingTerminal::Echo::Off, m_stop);
    m_isAsking = false;
    if (m_stop.stop_requested())
        co_return; // the operation stops, and ends its request by itself
    if (line && !line->isEmpty())
        m_auth.proceed(Password(std::move(*line)));
    else
        m_auth.cancel();
}

} // namespace larkspur::cli
