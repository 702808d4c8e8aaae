#include "inventory/refresh/StartupCheck.h"

#include "core/brew/BrewPathResolver.h"
#include "core/brew/BrewService.h"
#include "core/settings/Preferences.h"
#include "inventory/refresh/XcodeSetup.h"
#include "inventory/state/InventoryState.h"

namespace larkspur {

StartupCheck::StartupCheck(BrewPathResolver &resolver, BrewService &brew, InventoryState &state,
                           Preferences &preferences)
    : m_resolver(resolver)
    , m_brew(brew)
    , m_state(state)
    , m_preferences(preferences) {}

Task<StartupOutcome> StartupCheck::run(StopToken stop) {
    const auto path = co_await m_resolver.resolve();
    m_state.update([&](Inventory &inventory) { inventory.brewPath = path; });
    if (!path)
        co_return StartupOutcome::BrewNotInstalled;
    co_return co_await readVersion(std::move(stop));
}

Task<StartupOutcome> StartupCheck::readVersion(StopToken stop) {
    const auto result = co_await m_brew.execute(
        {.arguments = {"--version"}, .suppressAutoUpdate = true, .stop = std::move(stop)});
    if (!result)
        co_return result.error().kind == BrewError::Kind::BrewNotInstalled ? StartupOutcome::BrewNotInstalled
                                                                           : StartupOutcome::Ready;
    if (needsXcodeSetup(result->combinedOutput()))
        co_return StartupOutcome::XcodeSetupRequired;
    const QString version = versionFromOutput(result->standardOutput());
    if (!version.isEmpty()) {
        m_preferences.remember(keys::lastKnownHomebrewVersion, version);
        m_state.update([&](Inventory &inventory) { inventory.brewVersion = version; });
    }
    co_return StartupOutcome::Ready;
}

QString versionFromOutput(const QString &output) {
    const QString prefix = QStringLiteral("Homebrew ");
    for (const QString &line : output.split(QLatin1Char('\n')))
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed();
    return {};
}

} // namespace larkspur
