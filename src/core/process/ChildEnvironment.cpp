#include "core/process/ChildEnvironment.h"

#include <QSet>

namespace larkspur {

namespace {

const QString searchPath =
    QStringLiteral("/opt/homebrew/bin:/opt/homebrew/sbin:/usr/local/bin:/usr/local/sbin");

/// The --appdir option for Homebrew, which splits HOMEBREW_CASK_OPTS as a shell splits a line.
QString appdirOption(const ChildEnvironmentInputs &inputs) {
    QString folder = inputs.customCaskAppdir.trimmed();
    if (folder.isEmpty())
        return {};
    if (folder == QLatin1String("~") || folder.startsWith(QLatin1String("~/")))
        folder.replace(0, 1, inputs.homeFolder);
    folder.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    folder.replace(QLatin1String("\""), QLatin1String("\\\""));
    return QStringLiteral("--appdir=\"%1\"").arg(folder);
}

} // namespace

QProcessEnvironment childEnvironment(const ChildEnvironmentInputs &inputs, const ShellCommand &command) {
    QProcessEnvironment environment = inputs.system;
    for (auto entry = inputs.loginShell.cbegin(); entry != inputs.loginShell.cend(); ++entry)
        environment.insert(entry.key(), entry.value());

    const QString ownPath = environment.value(QStringLiteral("PATH"));
    environment.insert(QStringLiteral("PATH"),
                       ownPath.isEmpty() ? searchPath : searchPath + QLatin1Char(':') + ownPath);
    environment.insert(QStringLiteral("SUDO_ASKPASS"), inputs.askpassScript);
    environment.insert(QStringLiteral("HOMEBREW_NO_ASK"), QStringLiteral("1"));
    if (command.suppressAutoUpdate)
        environment.insert(QStringLiteral("HOMEBREW_NO_AUTO_UPDATE"), QStringLiteral("1"));
    if (command.mode != RunMode::Terminal)
        environment.insert(QStringLiteral("HOMEBREW_NO_COLOR"), QStringLiteral("1"));
    else if (!environment.contains(QStringLiteral("TERM")))
        environment.insert(QStringLiteral("TERM"), QStringLiteral("xterm-256color"));

    if (const QString option = appdirOption(inputs); !option.isEmpty()) {
        const QString name = QStringLiteral("HOMEBREW_CASK_OPTS");
        const QString existing = environment.value(name);
        environment.insert(name, existing.isEmpty() ? option : existing + QLatin1Char(' ') + option);
    }
    for (auto entry = command.environment.cbegin(); entry != command.environment.cend(); ++entry)
        environment.insert(entry.key(), entry.value());
    environment.remove(
        QStringLiteral("LARKSPUR_ASKPASS_PASSWORD")); // only a child's own password stands there
    return environment;
}

EnvironmentMap homebrewVariables(const QString &envOutput) {
    static const QSet<QString> dropped{
        QStringLiteral("HOMEBREW_PREFIX"),     QStringLiteral("HOMEBREW_CELLAR"),
        QStringLiteral("HOMEBREW_REPOSITORY"), QStringLiteral("HOMEBREW_SHELLENV_PREFIX"),
        QStringLiteral("HOMEBREW_COLOR"),      QStringLiteral("HOMEBREW_FORCE_COLOR")};
    EnvironmentMap variables;
    for (const QString &line : envOutput.split(QLatin1Char('\n'))) {
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals <= 0 || !line.startsWith(QLatin1String("HOMEBREW_")))
            continue;
        const QString name = line.left(equals);
        if (!dropped.contains(name))
            variables.insert(name, line.mid(equals + 1));
    }
    return variables;
}

} // namespace larkspur
