#include "app/Larkspur.h"
#include "cli/LiveOutput.h"
#include "cli/OperationQuestion.h"
#include "cli/PasswordPrompt.h"
#include "cli/commands/Commands.h"
#include "core/brew/PackageName.h"
#include "operations/outcome/FailureSummary.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

const QString cask = QStringLiteral("--cask");
const QString yes = QStringLiteral("--yes");

QString outcomeLine(const OperationRun &run) {
    if (run.wasCancelled())
        return QStringLiteral("Cancelled: %1.").arg(run.title());
    if (run.wasStopped())
        return QStringLiteral("Stopped: %1. The operation may be incomplete.").arg(run.title());
    switch (run.outcome()) {
    case OperationOutcome::Succeeded:
        return QStringLiteral("Done: %1.").arg(run.title());
    case OperationOutcome::CompletedWithWarnings:
        return QStringLiteral("Completed with warnings: %1.").arg(run.title());
    case OperationOutcome::Running:
    case OperationOutcome::Failed:
        break;
    }
    return QStringLiteral("Failed: %1.").arg(run.title());
}

/// What the output of a failed operation comes down to, and what to do about it.
void printReason(const Terminal &terminal, const OperationRun &run) {
    const FailureSummary summary = summarizeFailure(run.request(), run.transcript().lines());
    for (const QString &text : {summary.text, summary.suggestion, summary.commandToCopy})
        if (!text.isEmpty())
            terminal.error(text);
}

/// Starts the operation, prints its output, and waits for its end.
Task<ExitStatus> perform(CommandContext context, OperationRequest request, bool isAgreed) {
    if (!co_await mayProceed(context, request, isAgreed)) {
        context.terminal.error(QStringLiteral("Nothing was changed."));
        co_return ExitStatus::Failed;
    }
    const PasswordPrompt passwords(context.larkspur.sudoAuth(), context.terminal, context.larkspur.tasks(),
                                   context.stop);
    OperationCenter &center = context.larkspur.operations();
    center.setWantsRedraws(context.terminal.isInteractive());
    OperationRun *run = center.create(std::move(request));
    const auto output = std::make_shared<LiveOutput>(context.terminal);
    Completion<bool> ended;
    QObject::connect(run, &OperationRun::outputReceived, run, [run, output](const OutputChange &change) {
        output->receive(change);
        output->showProgress(run->progress());
    });
    QObject::connect(run, &OperationRun::changed, run, [run, output] {
        if (run->state() == OperationRun::State::AskingForPassword)
            output->clearBar();
        else if (run->isStopping())
            output->showNote(QStringLiteral("Stopping; Homebrew gets a moment to clean up…"));
        else if (run->silence() > std::chrono::seconds(0))
            output->showNote(QStringLiteral("Nothing has come from Homebrew for %1 s; Ctrl-C stops it.")
                                 .arg(run->silence().count()));
    });
    QObject::connect(run, &OperationRun::finished, run, [ended]() mutable { ended.complete(true); });
    const std::stop_callback onStop(context.stop, [run] { run->stop(); });
    center.start(run);
    co_await ended;
    output->clearBar();
    if (run->outcome() == OperationOutcome::Failed) {
        context.terminal.error(outcomeLine(*run));
        if (!run->wasStopped() && !run->wasCancelled())
            printReason(context.terminal, *run);
    } else
        context.terminal.line(outcomeLine(*run));
    const ExitStatus status = run->failure() ? statusFor(*run->failure()) : statusFor(run->outcome());
    co_return status;
}

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
        co_return co_await perform(context,
                                   {.kind = OperationKind::Install,
                                    .packages = targets(arguments),
                                    .adopt = arguments.has("--adopt"),
                                    .force = arguments.has("--force")},
                                   true);
    }
};

/// Commands that do one thing to every package that is named.
class PlainCommand final : public Command {
  public:
    PlainCommand(QString name, QString summary, OperationKind kind)
        : m_name(std::move(name))
        , m_summary(std::move(summary))
        , m_kind(kind) {}

    CommandShape shape() const override {
        return {.name = m_name,
                .synopsis = QStringLiteral("NAME… [--cask] [--yes]"),
                .summary = m_summary,
                .options = {cask, yes},
                .fewestNames = 1,
                .mostNames = -1};
    }
    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        co_return co_await perform(context, {.kind = m_kind, .packages = targets(arguments)},
                                   arguments.options.contains(yes));
    }

  private:
    QString m_name;
    QString m_summary;
    OperationKind m_kind;
};

class UpgradeCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("upgrade"),
                .synopsis = QStringLiteral("NAME… [--cask] [--yes] | --all [--yes]"),
                .summary =
                    QStringLiteral("Upgrades the named packages, or with --all everything that is outdated."),
                .options = {cask, yes, QStringLiteral("--all")},
                .fewestNames = 0,
                .mostNames = -1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        if (arguments.names.isEmpty() != arguments.has("--all")) {
            context.terminal.error(QStringLiteral("name the packages to upgrade, or say --all"));
            co_return ExitStatus::WrongUsage;
        }
        const auto outdated = co_await context.larkspur.queries().outdated(context.stop);
        if (!outdated) {
            context.terminal.error(outdated.error());
            co_return statusFor(outdated.error());
        }
        OperationRequest wanted = request(*outdated, arguments);
        co_await addInstalledVersions(&wanted, context);
        co_return co_await perform(context, wanted, arguments.options.contains(yes));
    }

  private:
    /// What is not outdated has its newest version already; the query that says so is worth its time only
    /// for packages that are named.
    static Task<> addInstalledVersions(OperationRequest *request, CommandContext context) {
        for (PackageTarget &package : request->packages) {
            if (!package.latestVersion.isEmpty() || !isValidPackageName(package.name))
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
                if (entry.token == shortName(package.name))
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
    static OperationRequest request(const QList<OutdatedPackage> &outdated,
                                    const CommandArguments &arguments) {
        if (arguments.has("--all")) {
            OperationRequest all{.kind = OperationKind::UpgradeAll,
                                 .expectedSteps = static_cast<int>(outdated.size())};
            std::ranges::transform(outdated, std::back_inserter(all.packages), targetOf);
            return all;
        }
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
        return {.kind = OperationKind::Upgrade, .packages = packages};
    }
};

} // namespace

std::unique_ptr<Command> makeInstallCommand() {
    return std::make_unique<InstallCommand>();
}

std::unique_ptr<Command> makeReinstallCommand() {
    return std::make_unique<PlainCommand>(QStringLiteral("reinstall"),
                                          QStringLiteral("Installs packages again, in their newest version."),
                                          OperationKind::Reinstall);
}

std::unique_ptr<Command> makeUninstallCommand() {
    return std::make_unique<PlainCommand>(QStringLiteral("uninstall"),
                                          QStringLiteral("Removes formulae, or casks with --cask."),
                                          OperationKind::Uninstall);
}

std::unique_ptr<Command> makePinCommand() {
    return std::make_unique<PlainCommand>(
        QStringLiteral("pin"), QStringLiteral("Holds packages at their version."), OperationKind::Pin);
}

std::unique_ptr<Command> makeUnpinCommand() {
    return std::make_unique<PlainCommand>(
        QStringLiteral("unpin"), QStringLiteral("Lets packages be upgraded again."), OperationKind::Unpin);
}

std::unique_ptr<Command> makeUpgradeCommand() {
    return std::make_unique<UpgradeCommand>();
}

} // namespace larkspur::cli
