#include "FormulaChanges.h"

#include "CaskChanges.h"

#include <algorithm>

namespace sample {

namespace {

const QString beer = QStringLiteral("🍺  ");

/// The formula's dependencies that are missing or outdated, deepest first.
void collectDependencies(const Brew &brew, const Formula &formula, QList<const Formula *> &needed) {
    for (const QString &name : formula.dependencies) {
        const Formula *dependency = brew.catalogue.formula(name);
        if (!dependency || needed.contains(dependency))
            continue;
        collectDependencies(brew, *dependency, needed);
        if (!brew.isInstalled(*dependency) || brew.isOutdated(*dependency))
            needed.append(dependency);
    }
}

/// Pours the newest version and clears the old ones away.
void pour(Brew &brew, const Formula &formula, bool onRequest) {
    const QStringList before = brew.prefix.versions(formula);
    brew.screen.pause(600);
    brew.screen.header(
        QStringLiteral("Pouring %1--%2.arm64_tahoe.bottle.tar.gz").arg(formula.name, formula.version));
    brew.screen.pause(500);
    const bool wasRequested =
        !before.isEmpty() &&
        brew.prefix.receipt(formula, before.last()).value(QLatin1String("installed_on_request")).toBool();
    brew.prefix.installKeg(formula, formula.version, onRequest || wasRequested,
                           QDateTime::currentDateTimeUtc());
    printCaveats(brew, formula.caveats);
    const QString keg = brew.prefix.keg(formula, formula.version);
    brew.screen.line(beer + keg + QStringLiteral(": ") + Prefix::sizeText(keg));
    brew.screen.header(QStringLiteral("Running `brew cleanup %1`...").arg(formula.name));
    for (const QString &version : before) {
        if (version == formula.version)
            continue;
        const QString old = brew.prefix.keg(formula, version);
        brew.screen.line(QStringLiteral("Removing: %1... (%2)").arg(old, Prefix::sizeText(old)));
        brew.prefix.removeKeg(formula, version);
    }
}

/// A build that fails as Homebrew's builds do: status 1, and no line that begins with "Error:".
int failBuild(const Brew &brew, const Formula &formula) {
    brew.screen.header(QStringLiteral("./configure --prefix=") + brew.prefix.keg(formula, formula.version));
    brew.screen.pause(800);
    brew.screen.header(QStringLiteral("make install"));
    brew.screen.pause(800);
    brew.screen.line(
        QStringLiteral("Last 3 lines from %1/Logs/%2/02.make.log:").arg(brew.prefix.path(), formula.name));
    brew.screen.line(
        QStringLiteral("hearth.c:42: undefined reference to `kindling'\ncollect2: ld returned 1 exit status\n"
                       "make: *** [install] Failure 1"));
    brew.screen.note(QStringLiteral("READ THIS: https://docs.brew.sh/Troubleshooting"));
    return 1;
}

/// What was installed for others only and is needed by nobody any more.
void autoremove(Brew &brew) {
    const auto isNeeded = [&brew](const Formula &formula) {
        return std::ranges::any_of(brew.catalogue.formulae, [&](const Formula &other) {
            return brew.isInstalled(other) && other.dependencies.contains(formula.fullName());
        });
    };
    for (bool again = true; again;) {
        again = false;
        for (const Formula &formula : brew.catalogue.formulae) {
            const QStringList versions = brew.prefix.versions(formula);
            if (versions.isEmpty() || isNeeded(formula) ||
                brew.prefix.receipt(formula, versions.last())
                    .value(QLatin1String("installed_on_request"))
                    .toBool())
                continue;
            brew.screen.header(QStringLiteral("Autoremoving 1 unneeded formula:"));
            brew.screen.line(formula.fullName());
            for (const QString &version : versions)
                brew.prefix.removeKeg(formula, version);
            again = true;
        }
    }
}

int refuseWithoutLicence(const Brew &brew, const Formula &formula) {
    brew.screen.note(QStringLiteral("%1 asks you to accept the license terms before it is installed.\n"
                                    "Set HOMEBREW_ACCEPT_EULA=Y to accept them.")
                         .arg(formula.name));
    brew.screen.error(QStringLiteral("An exception occurred within a child process"));
    return 1;
}

} // namespace

QList<const Formula *> neededDependencies(const Brew &brew, const Formula &formula) {
    QList<const Formula *> needed;
    collectDependencies(brew, formula, needed);
    return needed;
}

int installFormula(Brew &brew, const Formula &formula, bool onRequest, const QString &verb) {
    const QList<const Formula *> needed = neededDependencies(brew, formula);
    brew.screen.header(verb + QLatin1Char(' ') + formula.fullName());
    if (const QStringList versions = brew.prefix.versions(formula); !versions.isEmpty())
        brew.screen.line(QStringLiteral("  %1 -> %2 ").arg(versions.last(), formula.version));
    if (!needed.isEmpty()) {
        QStringList names;
        for (const Formula *dependency : needed)
            names.append(dependency->fullName());
        brew.screen.header(
            QStringLiteral("Installing dependencies for %1: %2").arg(formula.fullName(), sentence(names)));
        for (const Formula *dependency : needed) {
            brew.screen.header(QStringLiteral("Installing %1 dependency: %2")
                                   .arg(formula.fullName(), dependency->fullName()));
            pour(brew, *dependency, false);
        }
        brew.screen.header(QStringLiteral("Installing ") + formula.fullName());
    }
    if (formula.behaviour == QLatin1String("build-fails"))
        return failBuild(brew, formula);
    if (formula.behaviour == QLatin1String("asks-licence") &&
        qEnvironmentVariableIsEmpty("HOMEBREW_ACCEPT_EULA"))
        return refuseWithoutLicence(brew, formula);
    pour(brew, formula, onRequest);
    return 0;
}

int reinstallFormula(Brew &brew, const Formula &formula) {
    brew.screen.header(QStringLiteral("Reinstalling %1 ").arg(formula.fullName()));
    brew.prefix.backUpKeg(formula);
    pour(brew, formula, true);
    brew.prefix.purgeKegBackup(formula);
    return 0;
}

int unlinkFormula(Brew &brew, const Formula &formula) {
    const QString linked = brew.prefix.linkedVersion(formula);
    const QString version = brew.prefix.versions(formula).value(0, linked);
    if (version.isEmpty()) {
        brew.screen.error(QStringLiteral("No such keg: %1/%2").arg(brew.prefix.cellar(), formula.name));
        return 1;
    }
    brew.prefix.unlink(formula);
    brew.screen.line(QStringLiteral("Unlinking %1... %2 symlinks removed.")
                         .arg(brew.prefix.keg(formula, linked.isEmpty() ? version : linked))
                         .arg(linked.isEmpty() ? 0 : 1));
    return 0;
}

int removeFormula(Brew &brew, const Formula &formula, const Arguments &arguments) {
    const QStringList versions = brew.prefix.versions(formula);
    if (versions.isEmpty()) {
        brew.screen.error(QStringLiteral("No such keg: %1/%2").arg(brew.prefix.cellar(), formula.name));
        return 1;
    }
    QStringList dependents;
    for (const Formula &other : brew.catalogue.formulae)
        if (brew.isInstalled(other) && other.dependencies.contains(formula.fullName()))
            dependents.append(other.name);
    if (!dependents.isEmpty() && !arguments.has("--ignore-dependencies")) {
        brew.screen.error(
            QStringLiteral("Refusing to uninstall %1\nbecause it is required by %2, which %3 currently "
                           "installed.\nYou can override this and force removal with:\n"
                           "  brew uninstall --ignore-dependencies %4")
                .arg(brew.prefix.keg(formula, versions.last()), sentence(dependents),
                     dependents.size() == 1 ? QStringLiteral("is") : QStringLiteral("are"), formula.name));
        return 1;
    }
    // Without --force only the version in use goes.
    const QString linked = brew.prefix.linkedVersion(formula);
    const QStringList removed =
        arguments.has("--force") ? versions : QStringList{linked.isEmpty() ? versions.last() : linked};
    for (const QString &version : removed) {
        const QString keg = brew.prefix.keg(formula, version);
        brew.screen.line(QStringLiteral("Uninstalling %1... (%2)").arg(keg, Prefix::sizeText(keg)));
        brew.screen.pause(400);
        brew.prefix.removeKeg(formula, version);
    }
    if (arguments.has("--force"))
        brew.prefix.unpin(formula.name, false);
    for (const QString &version : brew.prefix.versions(formula))
        brew.screen.line(QStringLiteral("%1 %2 is still installed.").arg(formula.name, version));
    if (qEnvironmentVariableIsEmpty("HOMEBREW_NO_AUTOREMOVE"))
        autoremove(brew);
    return 0;
}

int linkFormula(Brew &brew, const Formula &formula) {
    const QStringList versions = brew.prefix.versions(formula);
    if (versions.isEmpty()) {
        brew.screen.error(QStringLiteral("No such keg: %1/%2").arg(brew.prefix.cellar(), formula.name));
        return 1;
    }
    if (formula.kegOnly) {
        brew.screen.warning(
            QStringLiteral("%1 is keg-only and must be linked with `--force`.").arg(formula.name));
        return 0;
    }
    const QString keg = brew.prefix.keg(formula, versions.last());
    if (brew.prefix.linkedVersion(formula) == versions.last()) {
        brew.screen.warning(QStringLiteral("Already linked: ") + keg);
        return 0;
    }
    brew.prefix.link(formula, versions.last());
    brew.screen.line(QStringLiteral("Linking %1... 1 symlinks created.").arg(keg));
    return 0;
}

} // namespace sample
