#include "operations/OperationHistory.h"

#include "core/brew/PackageName.h"
#include "operations/installed/InstalledPackages.h"
#include "userdata/UserDataManager.h"

namespace larkspur {

namespace {

std::optional<HistoryAction> actionOf(OperationKind kind) {
    switch (kind) {
    case OperationKind::Install:
    case OperationKind::Reinstall:
        return HistoryAction::Install;
    case OperationKind::Upgrade:
    case OperationKind::UpgradeAll:
        return HistoryAction::Upgrade;
    case OperationKind::Uninstall:
        return HistoryAction::Uninstall;
    case OperationKind::Pin:
    case OperationKind::Unpin:
    case OperationKind::RestartService:
    case OperationKind::RollBack:
    case OperationKind::Restore:
        break;
    }
    return std::nullopt;
}

} // namespace

void OperationHistory::note(OperationKind kind, const PackageTarget &package, bool success) {
    if (const auto action = actionOf(kind); action && !package.name.isEmpty())
        m_userData.addHistoryEntry(*action, package.name, package.isCask, success);
}

void OperationHistory::noteUpgradeOfAll(const QList<PackageTarget> &packages, const InstalledPackages &after,
                                        bool cameToEnd) {
    for (const PackageTarget &package : packages) {
        const bool isThere =
            after.versions(shortName(package.name), package.isCask).contains(package.latestVersion);
        if (!package.isPinned && (isThere || cameToEnd))
            note(OperationKind::UpgradeAll, package, isThere);
    }
}

void OperationHistory::noteUpdate(bool success) {
    m_userData.addHistoryEntry(HistoryAction::Update, QStringLiteral("Homebrew"), false, success);
}

} // namespace larkspur
