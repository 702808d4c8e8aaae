#include "CaskChanges.h"

#include "Sudo.h"

#include <QFileInfo>

namespace sample {

namespace {

const QString beer = QStringLiteral("🍺  ");

void placeCask(Brew &brew, const Cask &cask) {
    printCaveats(brew, cask.caveats);
    brew.screen.pause(500);
    brew.screen.header(QStringLiteral("Moving App '%1' to '%2'").arg(cask.app, brew.prefix.appPath(cask)));
    brew.prefix.installCask(cask, cask.version, QDateTime::currentDateTimeUtc());
}

int fail(Brew &brew, const Cask &cask, const QString &text) {
    brew.screen.header(
        QStringLiteral("Purging files for version %1 of Cask %2").arg(cask.version, cask.token));
    brew.screen.error(cask.token + QStringLiteral(": ") + text);
    return 1;
}

/// The step for which Homebrew wants sudo; false if sudo did not get its password.
bool runAsRoot(Brew &brew, const Cask &cask, QString &failure) {
    QJsonObject state = brew.prefix.state();
    const QString key = QStringLiteral("rejected-") + cask.token;
    const bool rejects = cask.behaviour == QLatin1String("rejects-first-password") &&
                         !state.value(key).toBool() && !qEnvironmentVariableIsEmpty("SUDO_ASKPASS");
    const SudoRun run = runSudo(brew.prefix.path(),
                                {QStringLiteral("/bin/mkdir"), QStringLiteral("-p"),
                                 brew.prefix.path() + QStringLiteral("/var/privileged/") + cask.token},
                                rejects);
    if (run.sawPassword && rejects) {
        state.insert(key, true);
        brew.prefix.setState(state);
    }
    if (run.exitCode == 0)
        return true;
    brew.screen.note(run.errors.trimmed());
    failure = QStringLiteral("Failure while executing; `%1` exited with %2. Here's the output:\n%3")
                  .arg(run.commandLine)
                  .arg(run.exitCode)
                  .arg(run.errors.trimmed());
    return false;
}

/// What goes wrong with the cask's new version; empty if nothing does.
QString trouble(Brew &brew, const Cask &cask, bool isForced) {
    const QString app = brew.prefix.appPath(cask);
    if (cask.behaviour == QLatin1String("older-copy") && !isForced)
        return QStringLiteral("It seems there is already an App at '%1'.").arg(app);
    if (cask.behaviour == QLatin1String("broken-download"))
        return QStringLiteral("It seems the App source '%1/%2/%3/%4' is not there.")
            .arg(brew.prefix.caskroom(), cask.token, cask.version, cask.app);
    if (cask.behaviour == QLatin1String("app-management"))
        return QStringLiteral("Operation not permitted @ apply2files - %1/Contents/Info.plist").arg(app);
    QString failure;
    const bool wantsPassword = cask.behaviour == QLatin1String("wants-password") ||
                               cask.behaviour == QLatin1String("rejects-first-password");
    if (wantsPassword && !runAsRoot(brew, cask, failure))
        return failure;
    return {};
}

} // namespace

void printCaveats(const Brew &brew, QString caveats) {
    if (caveats.isEmpty())
        return;
    brew.screen.header(QStringLiteral("Caveats"));
    brew.screen.line(caveats.replace(QLatin1String("$HOMEBREW_PREFIX"), brew.prefix.path()));
}

int installCask(Brew &brew, const Cask &cask, const Arguments &arguments) {
    brew.screen.header(QStringLiteral("Installing Cask ") + cask.token);
    if (QFileInfo::exists(brew.prefix.appPath(cask))) {
        const QString there =
            QStringLiteral("It seems there is already an App at '%1'").arg(brew.prefix.appPath(cask));
        if (!arguments.has("--force") && !arguments.has("--adopt"))
            return fail(brew, cask, there + QLatin1Char('.'));
        if (arguments.has("--force"))
            brew.screen.warning(there + QStringLiteral("; overwriting."));
    }
    if (const QString failure = trouble(brew, cask, arguments.has("--force")); !failure.isEmpty())
        return fail(brew, cask, failure);
    placeCask(brew, cask);
    brew.screen.line(beer + cask.token + QStringLiteral(" was successfully installed!"));
    return 0;
}

int upgradeCask(Brew &brew, const Cask &cask) {
    const QString old = brew.prefix.installedVersion(cask);
    const QString app = brew.prefix.appPath(cask);
    brew.screen.header(QStringLiteral("Upgrading ") + cask.token);
    brew.screen.line(QStringLiteral("  %1 -> %2").arg(old, cask.version));
    if (!QFileInfo::exists(app))
        return fail(brew, cask, QStringLiteral("It seems the App source '%1' is not there.").arg(app));
    brew.screen.header(QStringLiteral("Backing up App '%1' to '%2/%3/%4/%1'")
                           .arg(cask.app, brew.prefix.caskroom(), cask.token, old));
    brew.prefix.backUpCask(cask);
    QString failure = trouble(brew, cask, false);
    if (cask.behaviour == QLatin1String("reverted")) {
        brew.screen.pause(700);
        brew.screen.warning(QStringLiteral("Reverting upgrade for Cask ") + cask.token);
        failure = QStringLiteral("The new version does not start.");
    }
    if (!failure.isEmpty()) {
        brew.prefix.restoreBackup(cask);
        return fail(brew, cask, failure);
    }
    placeCask(brew, cask);
    brew.screen.header(QStringLiteral("Purging files for version %1 of Cask %2").arg(old, cask.token));
    brew.prefix.purgeBackup(cask);
    brew.screen.line(beer + cask.token + QStringLiteral(" was successfully upgraded!"));
    return 0;
}

int reinstallCask(Brew &brew, const Cask &cask, const Arguments &arguments) {
    if (brew.isInstalled(cask))
        removeCask(brew, cask);
    brew.screen.header(QStringLiteral("Installing Cask ") + cask.token);
    if (const QString failure = trouble(brew, cask, arguments.has("--force")); !failure.isEmpty())
        return fail(brew, cask, failure);
    placeCask(brew, cask);
    brew.screen.line(beer + cask.token + QStringLiteral(" was successfully installed!"));
    return 0;
}

int removeCask(Brew &brew, const Cask &cask) {
    const QString version = brew.prefix.installedVersion(cask);
    if (version.isEmpty()) {
        brew.screen.error(QStringLiteral("Cask '%1' is not installed.").arg(cask.token));
        return 1;
    }
    brew.screen.header(QStringLiteral("Uninstalling Cask ") + cask.token);
    brew.screen.header(QStringLiteral("Removing App '%1'").arg(brew.prefix.appPath(cask)));
    brew.screen.pause(500);
    brew.screen.header(QStringLiteral("Purging files for version %1 of Cask %2").arg(version, cask.token));
    brew.prefix.removeCask(cask);
    return 0;
}

} // namespace sample
