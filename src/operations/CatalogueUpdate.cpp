#include "operations/CatalogueUpdate.h"

#include "core/brew/BrewService.h"
#include "inventory/refresh/InventoryRefresh.h"
#include "inventory/refresh/StartupCheck.h"
#include "operations/OperationHistory.h"
#include "operations/recovery/Recovery.h"

namespace larkspur {

CatalogueUpdate::CatalogueUpdate(Recovery &recovery, StartupCheck &startupCheck, InventoryRefresh &refresh,
                                 OperationHistory &history)
    : m_recovery(recovery)
    , m_startupCheck(startupCheck)
    , m_refresh(refresh)
    , m_history(history) {}

Task<Result<bool>> CatalogueUpdate::run(OperationContext context) {
    const auto updated = co_await updateCatalogue(context);
    if (updated)
        co_await m_startupCheck.readVersion(context.stop);
    co_await m_refresh.refresh(context.stop);
    co_return updated;
}

Task<Result<bool>> CatalogueUpdate::updateCatalogue(OperationContext context) {
    auto session = co_await m_recovery.beginOperation(context);
    if (!session)
        co_return std::unexpected(session.error());
    const auto result =
        co_await session->stream({.arguments = {"update"}}, context, BrewSession::Style::Plain);
    m_history.noteUpdate(result && result->succeeded());
    if (!result)
        co_return std::unexpected(result.error());
    if (!result->succeeded())
        co_return std::unexpected(BrewError::commandFailed(failureText(result->lines)));
    co_return true;
}

} // namespace larkspur
