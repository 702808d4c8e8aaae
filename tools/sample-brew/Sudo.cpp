#include "Sudo.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <cstdio>

namespace sample {

namespace {

const QByteArray defaultPassword = "sesame";
const QString rejecting = QStringLiteral("HOMEBREW_SAMPLE_SUDO_REJECTS");

QString hashFile(const QString &prefix) {
    return prefix + QStringLiteral("/Library/sample/sudo-hash");
}

QByteArray hashed(const QByteArray &password) {
    return QCryptographicHash::hash(password, QCryptographicHash::Sha256).toHex();
}

bool isRight(const QString &prefix, const QByteArray &password) {
    QFile file(hashFile(prefix));
    const QByteArray wanted = file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
    return qEnvironmentVariableIsEmpty(qPrintable(rejecting)) &&
           hashed(password) == (wanted.isEmpty() ? hashed(defaultPassword) : wanted);
}

/// What Homebrew's launcher lets through to everything that it runs.
QProcessEnvironment filteredEnvironment() {
    static const QStringList kept{
        QStringLiteral("HOME"),         QStringLiteral("SHELL"),   QStringLiteral("TERM"),
        QStringLiteral("TERMINFO"),     QStringLiteral("COLUMNS"), QStringLiteral("DISPLAY"),
        QStringLiteral("LOGNAME"),      QStringLiteral("USER"),    QStringLiteral("CI"),
        QStringLiteral("SUDO_ASKPASS"), QStringLiteral("PATH")};
    const QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    QProcessEnvironment filtered;
    for (const QString &name : all.keys())
        if (kept.contains(name) || name.startsWith(QLatin1String("HOMEBREW_")))
            filtered.insert(name, all.value(name));
    filtered.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin:/usr/sbin:/sbin"));
    return filtered;
}

void say(const char *text) {
    std::fprintf(stderr, "%s\n", text);
    std::fflush(stderr);
}

/// One password, from the askpass program or from standard input, without its line feed.
QByteArray readPassword(bool fromInput) {
    QByteArray text;
    if (fromInput) {
        QFile input;
        if (input.open(stdin, QIODevice::ReadOnly))
            text = input.readLine();
    } else {
        QProcess askpass;
        askpass.start(qEnvironmentVariable("SUDO_ASKPASS"), {QStringLiteral("Password:")});
        askpass.waitForFinished(-1);
        text = askpass.readAllStandardOutput();
    }
    return text.endsWith('\n') ? text.chopped(1) : text;
}

/// Asks up to three times, as sudo does. Returns whether a right password came.
bool authenticate(const QString &prefix, bool fromInput) {
    constexpr int tries = 3;
    for (int i = 1; i <= tries; ++i) {
        const QByteArray password = readPassword(fromInput);
        if (password.isEmpty()) {
            say("sudo: no password was provided");
            say("sudo: a password is required");
            return false;
        }
        if (isRight(prefix, password))
            return true;
        if (fromInput) {
            say("sudo: 1 incorrect password attempt");
            return false;
        }
        if (i < tries)
            say("Sorry, try again.");
    }
    say("sudo: 3 incorrect password attempts");
    return false;
}

} // namespace

SudoRun runSudo(const QString &prefix, const QStringList &command, bool rejects) {
    QProcessEnvironment environment = filteredEnvironment();
    QStringList options;
    if (environment.contains(QStringLiteral("SUDO_ASKPASS")))
        options.append(QStringLiteral("-A"));
    options += {QStringLiteral("-E"), QStringLiteral("--")};
    if (rejects)
        environment.insert(rejecting, QStringLiteral("1"));
    QProcess sudo;
    sudo.setProcessEnvironment(environment);
    sudo.start(prefix + QStringLiteral("/Library/sample/sudo"), options + command);
    sudo.waitForFinished(-1);
    SudoRun run;
    run.exitCode = sudo.exitStatus() == QProcess::NormalExit ? sudo.exitCode() : 1;
    run.commandLine =
        (QStringList{QStringLiteral("/usr/bin/sudo")} + options + command).join(QLatin1Char(' '));
    run.errors = QString::fromUtf8(sudo.readAllStandardError());
    run.sawPassword = run.exitCode == 0 || run.errors.contains(QLatin1String("incorrect"));
    return run;
}

int sudoMain(const QString &prefix, const QStringList &words) {
    QStringList command = words;
    bool hasAskpass = false;
    bool fromInput = false;
    while (!command.isEmpty() && command.first().startsWith(QLatin1Char('-'))) {
        const QString word = command.takeFirst();
        hasAskpass = hasAskpass || word == QLatin1String("-A");
        fromInput = fromInput || word == QLatin1String("-S");
        if (word == QLatin1String("-u") || word == QLatin1String("-p"))
            command.takeFirst();
        if (word == QLatin1String("--"))
            break;
    }
    if (!hasAskpass && !fromInput) {
        say("sudo: a terminal is required to read the password; either use the -S option to read from "
            "standard input or configure an askpass helper");
        say("sudo: a password is required");
        return 1;
    }
    if (!authenticate(prefix, fromInput))
        return 1;
    return command.isEmpty() ? 0 : QProcess::execute(command.first(), command.mid(1));
}

void setSudoPassword(const QString &prefix, const QByteArray &password) {
    QDir().mkpath(prefix + QStringLiteral("/Library/sample"));
    QFile file(hashFile(prefix));
    if (file.open(QIODevice::WriteOnly))
        file.write(hashed(password));
}

} // namespace sample
