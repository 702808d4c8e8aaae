#include "Brew.h"

#include <algorithm>

namespace sample {

namespace {

const QString beer = QStringLiteral("🍺  ");

QString label(const Formula &formula) {
    return QStringLiteral("Formula %1 (%2)").arg(formula.name, formula.version);
}

QString label(const Cask &cask) {
    return QStringLiteral("Cask %1 (%2)").arg(cask.token, cask.version);
}

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

void printCaveats(const Brew &brew, QString caveats) {
    if (caveats.isEmpty())
        return;
    brew.screen.header(QStringLiteral("Caveats"));
    brew.screen.line(caveats.replace(QLatin1String("$HOMEBREW_PREFIX"), brew.prefix.path()));
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

int installFormula(Brew &brew, const Formula &formula, bool onRequest, const QString &verb) {
    QList<const Formula *> needed;
    collectDependencies(brew, formula, needed);
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
    pour(brew, formula, onRequest);
    return 0;
}

void fetchAll(Brew &brew, const QList<const Formula *> &formulae, const QList<const Cask *> &casks) {
    QStringList names;
    QList<Download> downloads;
    for (const Formula *formula : formulae) {
        QList<const Formula *> needed;
        collectDependencies(brew, *formula, needed);
        for (const Formula *dependency : needed)
            if (!formulae.contains(dependency))
                downloads.append({label(*dependency), dependency->kilobytes});
        names.append(formula->name);
        downloads.append({label(*formula), formula->kilobytes});
    }
    for (const Cask *cask : casks) {
        names.append(cask->fullToken());
        downloads.append({label(*cask), cask->kilobytes});
    }
    if (!names.isEmpty())
        brew.screen.fetch(names, downloads);
}

void placeCask(Brew &brew, const Cask &cask) {
    printCaveats(brew, cask.caveats);
    brew.screen.pause(500);
    brew.screen.header(QStringLiteral("Moving App '%1' to '%2'").arg(cask.app, brew.prefix.appPath(cask)));
    brew.prefix.installCask(cask, cask.version, QDateTime::currentDateTimeUtc());
}

int installCask(Brew &brew, const Cask &cask) {
    if (brew.isInstalled(cask)) {
        brew.screen.warning(
            QStringLiteral("Not upgrading %1, the latest version is already installed").arg(cask.token));
        return 0;
    }
    fetchAll(brew, {}, {&cask});
    brew.screen.header(QStringLiteral("Installing Cask ") + cask.token);
    placeCask(brew, cask);
    brew.screen.line(beer + cask.token + QStringLiteral(" was successfully installed!"));
    return 0;
}

void upgradeCask(Brew &brew, const Cask &cask) {
    const QString old = brew.prefix.installedVersion(cask);
    brew.screen.header(QStringLiteral("Upgrading ") + cask.token);
    brew.screen.line(QStringLiteral("  %1 -> %2").arg(old, cask.version));
    brew.screen.header(QStringLiteral("Backing up App '%1' to '%2/%3/%4/%1'")
                           .arg(cask.app, brew.prefix.caskroom(), cask.token, old));
    placeCask(brew, cask);
    brew.screen.header(QStringLiteral("Purging files for version %1 of Cask %2").arg(old, cask.token));
    brew.screen.line(beer + cask.token + QStringLiteral(" was successfully upgraded!"));
}

struct Selection {
    QList<const Formula *> formulae;
    QList<const Cask *> casks;
    QStringList pinned;
    int status = 0;
};

/// What an upgrade command line means, pinned packages apart.
Selection selectUpgrades(Brew &brew, const Arguments &arguments) {
    Selection selection;
    const bool isAll = arguments.names.isEmpty();
    for (const QString &name : arguments.names) {
        const bool known = (!arguments.has("--cask") && brew.catalogue.formula(name)) ||
                           (!arguments.has("--formula") && brew.catalogue.cask(name));
        if (!known) {
            brew.screen.error(QStringLiteral("No available formula with the name \"%1\".").arg(name));
            selection.status = 1;
        }
    }
    const auto isMeant = [&](const QString &shortName, const QString &fullName) {
        return isAll || arguments.names.contains(shortName) || arguments.names.contains(fullName);
    };
    for (const Formula &formula : brew.catalogue.formulae) {
        if (arguments.has("--cask") || !isMeant(formula.name, formula.fullName()) ||
            (isAll && !brew.isTrusted(formula.tap)))
            continue;
        if (!brew.isInstalled(formula)) {
            if (!isAll) {
                brew.screen.error(formula.fullName() + QStringLiteral(" not installed"));
                selection.status = 1;
            }
        } else if (!brew.isOutdated(formula)) {
            if (!isAll)
                brew.screen.warning(
                    QStringLiteral("%1 %2 already installed").arg(formula.fullName(), formula.version));
        } else if (brew.prefix.isPinned(formula.name, false)) {
            selection.pinned.append(formula.fullName() + QLatin1Char(' ') + formula.version);
        } else {
            selection.formulae.append(&formula);
        }
    }
    for (const Cask &cask : brew.catalogue.casks)
        if (!arguments.has("--formula") && isMeant(cask.token, cask.token) && brew.isOutdated(cask))
            selection.casks.append(&cask);
    return selection;
}

QStringList upgradeLines(const Brew &brew, const Selection &selection) {
    QStringList lines;
    for (const Formula *formula : selection.formulae)
        lines.append(QStringLiteral("%1 %2 -> %3")
                         .arg(formula->fullName(), brew.prefix.versions(*formula).last(), formula->version));
    for (const Cask *cask : selection.casks)
        lines.append(QStringLiteral("%1 %2 -> %3")
                         .arg(cask->token, brew.prefix.installedVersion(*cask), cask->version));
    return lines;
}

QString packageCount(qsizetype count) {
    return QStringLiteral("%1 outdated package%2")
        .arg(count)
        .arg(count == 1 ? QString() : QStringLiteral("s"));
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
    for (const QString &version : versions) {
        const QString keg = brew.prefix.keg(formula, version);
        brew.screen.line(QStringLiteral("Uninstalling %1... (%2)").arg(keg, Prefix::sizeText(keg)));
        brew.screen.pause(400);
        brew.prefix.removeKeg(formula, version);
    }
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

int unknown(const Brew &brew, const QString &name) {
    brew.screen.warning(QStringLiteral("No available formula with the name \"%1\".").arg(name));
    brew.screen.header(QStringLiteral("Searching for similarly named formulae and casks..."));
    brew.screen.error(QStringLiteral("No formulae or casks found for %1.").arg(name));
    return 1;
}

} // namespace

int install(Brew &brew, const Arguments &arguments) {
    int status = 0;
    for (const QString &name : arguments.names) {
        const Formula *formula = arguments.has("--cask") ? nullptr : brew.catalogue.formula(name);
        const Cask *cask = formula ? nullptr : brew.catalogue.cask(name);
        if (cask) {
            status |= installCask(brew, *cask);
        } else if (!formula) {
            return unknown(brew, name);
        } else if (brew.isInstalled(*formula) && !brew.isOutdated(*formula)) {
            brew.screen.warning(
                QStringLiteral("%1 %2 is already installed and up-to-date.\nTo reinstall %2, run:\n"
                               "  brew reinstall %3")
                    .arg(formula->fullName(), formula->version, formula->name));
        } else {
            fetchAll(brew, {formula}, {});
            status |= installFormula(brew, *formula, true, QStringLiteral("Installing"));
        }
    }
    return status;
}

int upgrade(Brew &brew, const Arguments &arguments) {
    const Selection selection = selectUpgrades(brew, arguments);
    const QStringList lines = upgradeLines(brew, selection);
    if (arguments.has("--dry-run")) {
        if (!lines.isEmpty())
            brew.screen.header(QStringLiteral("Would upgrade ") + packageCount(lines.size()));
        for (const QString &line : lines)
            brew.screen.line(line);
        return selection.status;
    }
    if (!selection.pinned.isEmpty()) {
        const QString text = QStringLiteral("Not upgrading %1 pinned package:").arg(selection.pinned.size());
        if (arguments.names.isEmpty())
            brew.screen.warning(text);
        else
            brew.screen.error(text);
        brew.screen.line(selection.pinned.join(QLatin1Char('\n')));
    }
    if (lines.isEmpty())
        return selection.pinned.isEmpty() || arguments.names.isEmpty() ? selection.status : 1;
    brew.screen.header(QStringLiteral("Upgrading %1:").arg(packageCount(lines.size())));
    brew.screen.line(lines.join(QLatin1Char('\n')));
    fetchAll(brew, selection.formulae, selection.casks);
    int status = selection.status;
    for (const Formula *formula : selection.formulae) {
        if (!brew.isOutdated(*formula))
            continue; // came along as somebody's dependency
        status |= installFormula(brew, *formula, false, QStringLiteral("Upgrading"));
    }
    for (const Cask *cask : selection.casks)
        upgradeCask(brew, *cask);
    const auto done = lines.size() - std::ranges::count_if(selection.formulae, [&](const Formula *formula) {
                          return brew.isOutdated(*formula);
                      });
    brew.screen.header(QStringLiteral("Upgraded ") + packageCount(done));
    return status;
}

int reinstall(Brew &brew, const Arguments &arguments) {
    for (const QString &name : arguments.names) {
        const Formula *formula = arguments.has("--cask") ? nullptr : brew.catalogue.formula(name);
        const Cask *cask = formula ? nullptr : brew.catalogue.cask(name);
        if (formula) {
            fetchAll(brew, {formula}, {});
            brew.screen.header(QStringLiteral("Reinstalling %1 ").arg(formula->fullName()));
            pour(brew, *formula, true);
        } else if (cask) {
            fetchAll(brew, {}, {cask});
            if (brew.isInstalled(*cask))
                removeCask(brew, *cask);
            brew.screen.header(QStringLiteral("Installing Cask ") + cask->token);
            placeCask(brew, *cask);
            brew.screen.line(beer + cask->token + QStringLiteral(" was successfully installed!"));
        } else {
            return unknown(brew, name);
        }
    }
    return 0;
}

int uninstall(Brew &brew, const Arguments &arguments) {
    int status = 0;
    for (const QString &name : arguments.names) {
        const Formula *formula = arguments.has("--cask") ? nullptr : brew.catalogue.formula(name);
        const Cask *cask = formula ? nullptr : brew.catalogue.cask(name);
        if (formula) {
            status |= removeFormula(brew, *formula, arguments);
        } else if (cask) {
            status |= removeCask(brew, *cask);
        } else {
            brew.screen.error(QStringLiteral("No such keg: %1/%2").arg(brew.prefix.cellar(), name));
            return 1;
        }
    }
    return status;
}

int pin(Brew &brew, const Arguments &arguments) {
    for (const QString &name : arguments.names) {
        const bool isCask = arguments.has("--cask") || !brew.catalogue.formula(name);
        if (brew.prefix.isPinned(name, isCask))
            brew.screen.warning(name + QStringLiteral(" already pinned"));
        else
            brew.prefix.pin(name, isCask);
    }
    return 0;
}

int unpin(Brew &brew, const Arguments &arguments) {
    for (const QString &name : arguments.names)
        brew.prefix.unpin(name, arguments.has("--cask") || !brew.catalogue.formula(name));
    return 0;
}

} // namespace sample
