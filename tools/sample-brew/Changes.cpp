#include "CaskChanges.h"
#include "FormulaChanges.h"

#include <algorithm>

namespace sample {

namespace {

QString label(const Formula &formula) {
    return QStringLiteral("Formula %1 (%2)").arg(formula.name, formula.version);
}

QString label(const Cask &cask) {
    return QStringLiteral("Cask %1 (%2)").arg(cask.token, cask.version);
}

void fetchAll(Brew &brew, const QList<const Formula *> &formulae, const QList<const Cask *> &casks) {
    QStringList names;
    QList<Download> downloads;
    for (const Formula *formula : formulae) {
        for (const Formula *dependency : neededDependencies(brew, *formula))
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

void printPlan(const Brew &brew, const Selection &selection, const QStringList &lines) {
    for (const Formula *formula : selection.formulae) {
        const QList<const Formula *> needed = neededDependencies(brew, *formula);
        if (needed.isEmpty())
            continue;
        brew.screen.header(
            QStringLiteral("Would upgrade %1 %2 for %3:")
                .arg(needed.size())
                .arg(needed.size() == 1 ? QStringLiteral("dependency") : QStringLiteral("dependencies"),
                     formula->name));
        for (const Formula *dependency : needed)
            brew.screen.line(QStringLiteral("%1  %2 -> %3")
                                 .arg(dependency->fullName(),
                                      brew.prefix.versions(*dependency).value(0, QStringLiteral("none")),
                                      dependency->version));
    }
    if (!lines.isEmpty())
        brew.screen.header(QStringLiteral("Would upgrade ") + packageCount(lines.size()));
    for (const QString &line : lines)
        brew.screen.line(line);
}

int install(Brew &brew, const Cask &cask, const Arguments &arguments) {
    if (brew.isInstalled(cask)) {
        brew.screen.warning(
            QStringLiteral("Not upgrading %1, the latest version is already installed").arg(cask.token));
        return 0;
    }
    fetchAll(brew, {}, {&cask});
    return installCask(brew, cask, arguments);
}

int unknown(const Brew &brew, const QString &name) {
    brew.screen.warning(QStringLiteral("No available formula with the name \"%1\".").arg(name));
    brew.screen.header(QStringLiteral("Searching for similarly named formulae and casks..."));
    brew.screen.error(QStringLiteral("No formulae or casks found for %1.").arg(name));
    return 1;
}

int forEachFormula(Brew &brew, const Arguments &arguments, int (*change)(Brew &, const Formula &)) {
    int status = 0;
    for (const QString &name : arguments.names) {
        const Formula *formula = brew.catalogue.formula(name);
        if (!formula)
            return unknown(brew, name);
        status |= change(brew, *formula);
    }
    return status;
}

/// What an installation would do. Names only, as Homebrew prints it.
int planInstall(Brew &brew, const Arguments &arguments) {
    for (const QString &name : arguments.names) {
        const Formula *formula = arguments.has("--cask") ? nullptr : brew.catalogue.formula(name);
        if (!formula && !brew.catalogue.cask(name))
            return unknown(brew, name);
        brew.screen.header(QStringLiteral("Would install 1 %1:")
                               .arg(formula ? QStringLiteral("formula") : QStringLiteral("cask")));
        brew.screen.line(formula ? formula->fullName() : name);
        QStringList replaced;
        for (const Formula *dependency :
             formula ? neededDependencies(brew, *formula) : QList<const Formula *>())
            if (brew.isInstalled(*dependency))
                replaced.append(dependency->fullName());
        if (formula && brew.isOutdated(*formula))
            replaced.append(formula->fullName());
        if (replaced.isEmpty())
            continue;
        brew.screen.header(
            QStringLiteral("Would upgrade %1 dependencies for %2:").arg(replaced.size()).arg(name));
        brew.screen.line(replaced.join(QLatin1Char('\n')));
    }
    return 0;
}

} // namespace

int install(Brew &brew, const Arguments &arguments) {
    if (arguments.has("--adopt") && arguments.has("--force")) {
        brew.screen.error(
            QStringLiteral("Invalid usage: Options --adopt and --force are mutually exclusive."));
        return 1;
    }
    if (arguments.has("--dry-run"))
        return planInstall(brew, arguments);
    int status = 0;
    for (const QString &name : arguments.names) {
        const Formula *formula = arguments.has("--cask") ? nullptr : brew.catalogue.formula(name);
        const Cask *cask = formula ? nullptr : brew.catalogue.cask(name);
        if (cask) {
            status |= install(brew, *cask, arguments);
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
        printPlan(brew, selection, lines);
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
        status |= upgradeCask(brew, *cask);
    const auto isStillOutdated = [&](const auto *package) { return brew.isOutdated(*package); };
    const auto done = lines.size() - std::ranges::count_if(selection.formulae, isStillOutdated) -
                      std::ranges::count_if(selection.casks, isStillOutdated);
    brew.screen.header(QStringLiteral("Upgraded ") + packageCount(done));
    return status;
}

int reinstall(Brew &brew, const Arguments &arguments) {
    int status = 0;
    for (const QString &name : arguments.names) {
        const Formula *formula = arguments.has("--cask") ? nullptr : brew.catalogue.formula(name);
        const Cask *cask = formula ? nullptr : brew.catalogue.cask(name);
        if (formula) {
            fetchAll(brew, {formula}, {});
            status |= reinstallFormula(brew, *formula);
        } else if (cask) {
            fetchAll(brew, {}, {cask});
            status |= reinstallCask(brew, *cask, arguments);
        } else {
            return unknown(brew, name);
        }
    }
    return status;
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

int link(Brew &brew, const Arguments &arguments) {
    return forEachFormula(brew, arguments, linkFormula);
}

int unlink(Brew &brew, const Arguments &arguments) {
    return forEachFormula(brew, arguments, unlinkFormula);
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
