#include "operations/UpgradeSafeguard.h"

#include "core/brew/PackageName.h"
#include "core/log/Logger.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/plan/OperationPlan.h"
#include "operations/snapshots/SnapshotManager.h"

namespace larkspur {

namespace {

void say(const OperationContext &context, const QString &line) {
    if (context.output)
        context.output->addLine(line);
}

QStringList namedFormulae(const OperationRequest &request) {
    QStringList names;
    for (const PackageTarget &package : request.packages)
        if (!package.isCask)
            names.append(package.name);
    return names;
}

} // namespace

UpgradeSafeguard::UpgradeSafeguard(Parts parts)
    : m_parts(parts) {}

/// Homebrew's dry run tells which; where it tells nothing, at least what was named.
Task<QStringList> UpgradeSafeguard::replacedFormulae(Upgrade upgrade) {
    if (upgrade.request.replacedFormulae)
        co_return QStringList(*upgrade.request.replacedFormulae);
    QStringList names = namedFormulae(upgrade.request);
    const bool isAll = upgrade.request.kind == OperationKind::UpgradeAll;
    if (names.isEmpty() && !isAll)
        co_return QStringList();
    QStringList arguments{QStringLiteral("upgrade"), QStringLiteral("--dry-run")};
    if (!isAll)
        arguments += QStringList{QStringLiteral("--formula")} + names;
    const auto answer =
        co_await upgrade.session->execute({.arguments = arguments, .stop = upgrade.context.stop});
    OperationPlan plan;
    if (answer)
        readDryRun(answer->combinedOutput(), plan);
    for (const PlannedChange &change : plan.changes)
        if (!names.contains(change.name))
            names.append(change.name);
    co_return QStringList(names);
}

Task<bool> UpgradeSafeguard::prepare(Upgrade upgrade, const InstalledPackages *installed) {
    bool isComplete = true;
    const auto snapshot =
        co_await m_parts.snapshots.take(SnapshotTrigger::PreUpgrade, installed, upgrade.context.stop);
    if (snapshot) {
        say(upgrade.context, QStringLiteral("==> Saved a restore point before upgrading (Time Machine)"));
    } else {
        isComplete = false;
        say(upgrade.context,
            QStringLiteral("==> Warning: No restore point could be saved: %1").arg(snapshot.error()));
    }
    if (!m_parts.kegs.isEnabled())
        co_return isComplete;
    const auto snapshotID = snapshot ? std::optional(snapshot->id) : std::nullopt;
    for (const QString &name : co_await replacedFormulae(upgrade)) {
        if (upgrade.context.stop.stop_requested())
            co_return isComplete;
        const QString formula = shortName(name);
        const QString version = installed->currentVersion(formula);
        if (version.isEmpty())
            continue; // a dependency that is new
        const auto kept = co_await m_parts.kegs.preserve({upgrade.prefix, formula, version, name}, snapshotID,
                                                         upgrade.context.stop);
        if (kept)
            continue;
        isComplete = false;
        m_parts.logger.error(QStringLiteral("[Larkspur] The keg of %1 %2 could not be preserved: %3")
                                 .arg(formula, version, kept.error()));
        say(upgrade.context,
            QStringLiteral(
                "==> Warning: %1 %2 could not be preserved, so this upgrade of it cannot be rolled "
                "back: %3")
                .arg(formula, version, kept.error()));
    }
    co_await m_parts.kegs.enforceCap(snapshotID);
    co_return isComplete;
}

Task<> UpgradeSafeguard::relinkLost(Upgrade upgrade, const InstalledPackages *before,
                                    const InstalledPackages *after) {
    upgrade.context.stop = {}; // repair is not stopped
    for (const QString &formula : before->linkedFormulae()) {
        if (after->isLinked(formula) || after->formulaVersions(formula).isEmpty())
            continue;
        say(upgrade.context, QStringLiteral("==> Linking %1 again").arg(formula));
        co_await upgrade.session->stream(
            {.arguments = {QStringLiteral("link"), QStringLiteral("--overwrite"), formula}}, upgrade.context,
            BrewSession::Style::Plain);
    }
}

} // namespace larkspur
