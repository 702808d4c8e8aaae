#include "app/Larkspur.h"
#include "cli/OperationRunner.h"
#include "cli/commands/Commands.h"
#include "core/brew/PackageName.h"
#include "operations/packages/InstallPackages.h"
#include "operations/packages/PinPackages.h"
#include "operations/packages/UninstallPackages.h"
#include "operations/packages/UpgradeAll.h"
#include "operations/packages/UpgradePackages.h"
#include "userdata/UpdateSelection.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

const QString cask = QStringLiteral("--cask");
const QString yes = QStringLiteral("--yes");

QList<PackageTarget> targets(const CommandArguments &arguments) {
    QList<PackageTarget> packages;
    for (const QString &name : arguments.names)
        packages.append({name, arguments.options.contains(cask)});
    return packages;
}

class InstallCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("install"),
                .synopsis = QStringLiteral("NAME… [--cask [--adopt] [--force]] [--yes]"),
                .summary = QStringLiteral("Installs formulae, or casks with --cask."),
                .options = {cask, yes, QStringLiteral("--adopt"), QStringLiteral("--force")},
                .fewestNames = 1,
                .mostNames = -1};
    }
    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const InstallOptions options{.adopt = arguments.has("--adopt"), .force = arguments.has("--force")};
        co_return co_await runOperation(
            context, installPackages(context.larkspur.packages(), targets(arguments), options), true);
    }
};

/// Commands that do one thing to every package that is named.
class PlainCommand final : public Command {
  public:
    using Make = OperationPtr (*)(const PackageServices &, const QList<PackageTarget> &);
    PlainCommand(QString name, QString summary, Make make)
        : m_name(std::move(name))
        , m_summary(std::move(summary))
        , m_make(make) {}

    CommandShape shape() const override {
        return {.name = m_name,
                .synopsis = QStringLiteral("NAME… [--cask] [--yes]"),
                .summary = m_summary,
                .options = {cask, yes},
                .fewestNames = 1,
                .mostNames = -1};
    }
    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        co_return co_await runOperation(context, m_make(context.larkspur.packages(), targets(arguments)),
                                        arguments.options.contains(yes));
    }

  private:
    QString m_name;
    QString m_summary;
    Make m_make;
};

class UpgradeCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {
            .name = QStringLiteral("upgrade"),
            .synopsis = QStringLiteral("NAME… [--cask] [--yes] | --all [--yes]"),
            .summary = QStringLiteral(
                "Upgrades the named packages, or with --all everything that is outdated and not snoozed."),
            .options = {cask, yes, QStringLiteral("--all")},
            .fewestNames = 0,
            .mostNames = -1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        if (arguments.names.isEmpty() != arguments.has("--all")) {
            context.terminal.error(QStringLiteral("name the packages to upgrade, or say --all"));
            co_return ExitStatus::WrongUsage;
        }
        const QString damage = context.larkspur.userData().snoozedDamage();
        if (arguments.has("--all") && !damage.isEmpty()) {
            context.terminal.error(
                QStringLiteral("The list of snoozed packages is damaged, so not all can be "
                               "upgraded: name the packages instead. ") +
                damage);
            co_return ExitStatus::Failed;
        }
        // What is named is upgraded even if it updates itself.
        const auto outdated = co_await context.larkspur.queries().outdated(
            context.stop, arguments.has("--all") ? InventoryQueries::SelfUpdating::AsPreferred
                                                 : InventoryQueries::SelfUpdating::Included);
        if (!outdated) {
            context.terminal.error(outdated.error());
            co_return statusFor(outdated.error());
        }
        if (!arguments.has("--all")) {
            QList<PackageTarget> packages = namedTargets(*outdated, arguments);
            co_await addInstalledVersions(&packages, context);
            co_return co_await runOperation(context, upgradePackages(context.larkspur.packages(), packages),
                                            arguments.options.contains(yes));
        }
        const UpdateSelection updates = selectUpdates(*outdated, context.larkspur.userData());
        QList<PackageTarget> packages;
        std::ranges::transform(updates.shown, std::back_inserter(packages), targetOf);
        const bool leavesSomeOut = !updates.snoozed.isEmpty();
        if (leavesSomeOut && std::ranges::all_of(packages, &PackageTarget::isPinned)) {
            context.terminal.line(QStringLiteral("Everything else is up to date."));
            co_return ExitStatus::Done;
        }
        if (leavesSomeOut)
            context.terminal.line(QStringLiteral("Snoozed, so upgraded only if another package needs it: %1")
                                      .arg(updates.snoozedNames().join(QStringLiteral(", "))));
        co_return co_await runOperation(context,
                                        upgradeOfAll(context.larkspur.packages(), packages, leavesSomeOut),
                                        arguments.options.contains(yes));
    }

  private:
    /// What is not outdated has its newest version already; the query that says so is worth its time only
    /// for packages that are named.
    static Task<> addInstalledVersions(QList<PackageTarget> *packages, CommandContext context) {
        for (PackageTarget &package : *packages) {
            if (!package.latestVersion.isEmpty() || !PackageName::parse(package.name))
                continue;
            const QString version = co_await installedVersion(package, context);
            package.installedVersion = version;
            package.latestVersion = version;
        }
    }

    static Task<QString> installedVersion(PackageTarget package, CommandContext context) {
        InventoryQueries &queries = context.larkspur.queries();
        if (package.isCask) {
            const auto casks = co_await queries.installedCasks(context.stop);
            for (const Cask &entry : casks.value_or(QList<Cask>()))
                if (entry.token == shortName(package.name) && entry.version != QLatin1String("latest"))
                    co_return QString(entry.version);
        } else {
            const auto formulae = co_await queries.installedFormulae(context.stop);
            for (const Formula &entry : formulae.value_or(QList<Formula>()))
                if (entry.name == shortName(package.name))
                    co_return QString(entry.version);
        }
        co_return QString();
    }

    static PackageTarget targetOf(const OutdatedPackage &package) {
        return {.name = package.fullName,
                .isCask = package.isCask,
                .installedVersion = package.installedVersions.join(QStringLiteral(", ")),
                .latestVersion = package.currentVersion,
                .isPinned = package.pinned};
    }

    /// A name that is outdated as a cask only is meant as one.
    static QList<PackageTarget> namedTargets(const QList<OutdatedPackage> &outdated,
                                             const CommandArguments &arguments) {
        QList<PackageTarget> packages = targets(arguments);
        for (PackageTarget &package : packages) {
            const auto find = [&](bool isCask) {
                return std::ranges::find_if(outdated, [&](const OutdatedPackage &entry) {
                    return entry.isCask == isCask && entry.name == shortName(package.name);
                });
            };
            auto found = find(package.isCask);
            if (found == outdated.end() && !package.isCask)
                found = find(true);
            if (found == outdated.end())
                continue;
            const QString name = package.name;
            package = targetOf(*found);
            package.name = name;
        }
        return packages;
    }
};

} // namespace

std::unique_ptr<Command> makeInstallCommand() {
    return std::make_unique<InstallCommand>();
}

std::unique_ptr<Command> makeReinstallCommand() {
    return std::make_unique<PlainCommand>(QStringLiteral("reinstall"),
                                          QStringLiteral("Installs packages again, in their newest version."),
                                          &reinstallPackages);
}

std::unique_ptr<Command> makeUninstallCommand() {
    return std::make_unique<PlainCommand>(QStringLiteral("uninstall"),
                                          QStringLiteral("Removes formulae, or casks with --cask."),
                                          &uninstallPackages);
}

std::unique_ptr<Command> makePinCommand() {
    return std::make_unique<PlainCommand>(QStringLiteral("pin"),
                                          QStringLiteral("Holds packages at their version."), &pinPackages);
}

std::unique_ptr<Command> makeUnpinCommand() {
    return std::make_unique<PlainCommand>(QStringLiteral("unpin"),
                                          QStringLiteral("Lets packages be upgraded again."), &unpinPackages);
}

std::unique_ptr<Command> makeUpgradeCommand() {
    return std::make_unique<UpgradeCommand>();
}

} // namespace larkspur::cli
