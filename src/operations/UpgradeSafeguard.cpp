#include "operations/UpgradeSafeguard.h"

#include "core/brew/PackageName.h"
#include "core/log/Logger.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/plan/OperationPlan.h"
#include "operations/snapshots/SnapshotManager.h"

#include <algorithm>

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
Task<UpgradeSafeguard::Replaced> UpgradeSafeguard::replacedFormulae(Upgrade upgrade) {
    if (upgrade.request.replacedFormulae)
        co_return Replaced{*upgrade.request.replacedFormulae};
    QStringList names = namedFormulae(upgrade.request);
    const bool isAll = upgrade.request.kind == OperationKind::UpgradeAll;
    if (names.isEmpty() && !isAll)
        co_return Replaced{};
    BrewArguments arguments{"upgrade", "--dry-run"};
    if (!isAll)
        arguments.append("--formula");
    for (const QString &text : std::as_const(names))
        if (const auto name = PackageName::parse(text))
            arguments.append(*name);
    const auto answer = co_await upgrade.session->execute(
        {.arguments = arguments, .suppressAutoUpdate = true, .stop = upgrade.context.stop});
    const auto verdict = answer ? answer->verdict() : std::unexpected(answer.error());
    OperationPlan plan;
    if (answer) // what was told before it failed is true all the same
        readDryRun(answer->combinedOutput(), plan);
    for (const PlannedChange &change : plan.changes)
        if (!names.contains(change.name))
            names.append(change.name);
    co_return Replaced{names, verdict ? QString() : verdict.error().description()};
}

Task<bool> UpgradeSafeguard::prepare(Upgrade upgrade,
                                     const std::expected<InstalledPackages, QString> *installed) {
    if (!*installed) {
        say(upgrade.context,
            QStringLiteral("==> Warning: No restore point could be saved: %1").arg(installed->error()));
        if (m_parts.kegs.isEnabled())
            say(upgrade.context, QStringLiteral("==> Warning: No version could be preserved, so this upgrade "
                                                "cannot be rolled back."));
        co_return false;
    }
    const InstalledPackages &packages = **installed;
    const auto snapshot =
        co_await m_parts.snapshots.take(SnapshotTrigger::PreUpgrade, &packages, upgrade.context.stop);
    say(upgrade.context,
        snapshot ? QStringLiteral("==> Saved a restore point before upgrading (Time Machine)")
                 : QStringLiteral("==> Warning: No restore point could be saved: %1").arg(snapshot.error()));
    bool isComplete = snapshot.has_value();
    if (m_parts.kegs.isEnabled() &&
        !co_await preserve(upgrade, &packages, snapshot ? std::optional(snapshot->id) : std::nullopt))
        isComplete = false;
    co_return isComplete;
}

/// False if a keg could not be preserved.
Task<bool> UpgradeSafeguard::preserve(Upgrade upgrade, const InstalledPackages *installed,
                                      std::optional<QUuid> snapshot) {
    const Replaced replaced = co_await replacedFormulae(upgrade);
    // Homebrew refuses to plan for what is pinned, which the person was asked about: no fault of this run.
    bool isComplete =
        replaced.failure.isEmpty() || std::ranges::any_of(upgrade.request.packages, &PackageTarget::isPinned);
    if (!replaced.failure.isEmpty()) {
        m_parts.logger.error(QStringLiteral("[Larkspur] The dry run before an upgrade failed: ") +
                             replaced.failure);
        say(upgrade.context, QStringLiteral("==> Warning: Homebrew does not tell what else this upgrade "
                                            "replaces, so only what is named is preserved: ") +
                                 replaced.failure.simplified());
    }
    for (const QString &name : replaced.names) {
        if (upgrade.context.stop.stop_requested())
            co_return isComplete;
        const QString formula = shortName(name);
        const QString version = installed->currentVersion(formula);
        if (version.isEmpty() || !PackageName::parse(name))
            continue; // a dependency that is new
        const auto kept = co_await m_parts.kegs.preserve(
            {upgrade.prefix, formula, version, name}, snapshot,
            {.stop = upgrade.context.stop, .keptOpen = upgrade.session->lockDescriptor()});
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
    co_await m_parts.kegs.enforceCap(snapshot);
    co_return isComplete;
}

} // namespace larkspur
