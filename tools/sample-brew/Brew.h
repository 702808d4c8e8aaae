#pragma once

#include "Catalogue.h"
#include "Prefix.h"
#include "Screen.h"

#include <QJsonObject>

namespace sample {

/// What every command works on.
struct Brew {
    Catalogue catalogue;
    Prefix prefix;
    Screen screen;

    bool isTrusted(const QString &tap) const {
        const Tap *found = catalogue.tap(tap);
        return found && (found->official || found->trusted);
    }
    bool isInstalled(const Formula &formula) const { return !prefix.versions(formula).isEmpty(); }
    bool isInstalled(const Cask &cask) const { return !prefix.installedVersion(cask).isEmpty(); }
    bool isOutdated(const Formula &formula) const {
        return isInstalled(formula) && !prefix.versions(formula).contains(formula.version);
    }
    /// By the rule of today's Homebrew: a self-updating app counts by what its bundle says.
    bool isOutdated(const Cask &cask) const {
        return isInstalled(cask) && prefix.installedVersion(cask) != cask.version;
    }
};

/// The words of a command line after the command.
struct Arguments {
    QStringList names;
    QStringList options;

    explicit Arguments(const QStringList &words);
    bool has(const char *option) const { return options.contains(QLatin1String(option)); }
};

/// JSON as `brew info` prints it.
QJsonObject formulaJson(const Brew &brew, const Formula &formula);
QJsonObject caskJson(const Brew &brew, const Cask &cask);

// Commands; each returns brew's exit status.
int info(Brew &brew, const Arguments &arguments);
int outdated(Brew &brew, const Arguments &arguments);
int leaves(Brew &brew, const Arguments &arguments);
int list(Brew &brew, const Arguments &arguments);
int search(Brew &brew, const Arguments &arguments);
int deps(Brew &brew, const Arguments &arguments);
int uses(Brew &brew, const Arguments &arguments);
int services(Brew &brew, const Arguments &arguments);
int tap(Brew &brew, const Arguments &arguments);
int tapInfo(Brew &brew, const Arguments &arguments);
int trust(Brew &brew, const Arguments &arguments);
int update(Brew &brew, const Arguments &arguments);

int install(Brew &brew, const Arguments &arguments);
int upgrade(Brew &brew, const Arguments &arguments);
int reinstall(Brew &brew, const Arguments &arguments);
int uninstall(Brew &brew, const Arguments &arguments);
int link(Brew &brew, const Arguments &arguments);
int unlink(Brew &brew, const Arguments &arguments);
int pin(Brew &brew, const Arguments &arguments);
int unpin(Brew &brew, const Arguments &arguments);

} // namespace sample
