#include "app/OperationJournal.h"

#include "operations/OperationCenter.h"
#include "userdata/UserDataManager.h"

namespace larkspur {

namespace {

std::optional<HistoryAction> actionOf(Deed deed) {
    switch (deed) {
    case Deed::Installed:
        return HistoryAction::Install;
    case Deed::Upgraded:
        return HistoryAction::Upgrade;
    case Deed::Uninstalled:
        return HistoryAction::Uninstall;
    case Deed::CatalogueUpdated:
        return HistoryAction::Update;
    case Deed::RolledBack:
    case Deed::None:
        break;
    }
    return std::nullopt;
}

} // namespace

OperationJournal::OperationJournal(OperationCenter &operations, UserDataManager &userData)
    : m_userData(userData) {
    connect(&operations, &OperationCenter::finished, this, [this](OperationRun *run) { note(*run); });
}

void OperationJournal::note(const OperationRun &run) {
    for (const PackageResult &result : run.report().packages)
        if (const auto action = actionOf(result.deed);
            action && !result.isUnchanged && !result.package.name.isEmpty())
            m_userData.addHistoryEntry(*action, result.package.name, result.package.isCask, result.isDone());
}

} // namespace larkspur
