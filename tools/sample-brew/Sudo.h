#pragma once

#include <QString>
#include <QStringList>

namespace sample {

/// How a command under the stand-in for sudo has ended.
struct SudoRun {
    int exitCode = 0;
    QString commandLine; ///< as Homebrew echoes it
    QString errors;
    bool sawPassword = false; ///< a password was given, right or wrong
};

/// Runs a command as Homebrew runs it under sudo: with the environment that Homebrew lets through, and with
/// -A exactly when there is an askpass program. `rejects`: no password is right this time.
SudoRun runSudo(const QString &prefix, const QStringList &command, bool rejects);

/// The stand-in for sudo, as a program of its own: really runs the askpass program, changes no user, and
/// knows one password.
int sudoMain(const QString &prefix, const QStringList &words);

/// Makes another password the right one; only its hash is kept.
void setSudoPassword(const QString &prefix, const QByteArray &password);

} // namespace sample
