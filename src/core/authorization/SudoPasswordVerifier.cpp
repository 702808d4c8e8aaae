#include "core/authorization/SudoPasswordVerifier.h"

#include "core/async/Worker.h"

#include <QFileInfo>
#include <QProcess>

namespace larkspur {

namespace {

constexpr int longestAnswer = 30'000; // milliseconds; sudo itself waits some seconds after a wrong password

Verification ask(const QString &sudo, const Password &password) {
    QProcess process;
    process.start(sudo, {QStringLiteral("-k"), QStringLiteral("-S"), QStringLiteral("-p"), QString(),
                         QStringLiteral("-v")});
    if (!process.waitForStarted())
        return Verification::CannotTell;
    QByteArray line = password.utf8() + '\n';
    process.write(line);
    process.closeWriteChannel();
    const bool hasEnded = process.waitForFinished(longestAnswer);
    wipe(line);
    if (!hasEnded) {
        process.kill();
        process.waitForFinished();
        return Verification::CannotTell;
    }
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 ? Verification::Matches
                                                                                   : Verification::Differs;
}

} // namespace

SudoPasswordVerifier::SudoPasswordVerifier(QString sudo)
    : m_sudo(std::move(sudo)) {}

Task<Verification> SudoPasswordVerifier::verify(Password password) {
    if (!QFileInfo(m_sudo).isExecutable())
        co_return Verification::CannotTell;
    co_return co_await runInWorker(
        [sudo = m_sudo, password = std::move(password)] { return ask(sudo, password); });
}

} // namespace larkspur
