#include "inventory/refresh/BrewReleaseCheck.h"

#include "core/brew/LatestBrewRelease.h"
#include "inventory/state/InventoryState.h"

namespace larkspur {

BrewReleaseCheck::BrewReleaseCheck(LatestBrewRelease &release, InventoryState &state, bool enabled)
    : m_release(release)
    , m_state(state)
    , m_enabled(enabled) {}

Task<> BrewReleaseCheck::run(StopToken stop) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto last = m_state.value().lastBrewReleaseCheck;
    if (!m_enabled || (last && last->addDays(1) > now))
        co_return;
    m_state.update([&](Inventory &inventory) { inventory.lastBrewReleaseCheck = now; });
    const auto tag = co_await m_release.fetch(std::move(stop));
    if (tag)
        m_state.update([&](Inventory &inventory) { inventory.latestBrewVersion = tag; });
}

} // namespace larkspur
