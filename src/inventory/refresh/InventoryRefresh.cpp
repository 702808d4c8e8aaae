#include "inventory/refresh/InventoryRefresh.h"

#include "core/log/Logger.h"
#include "inventory/cache/PackageCache.h"
#include "inventory/refresh/CaskEnrichment.h"
#include "inventory/refresh/HiddenTaps.h"
#include "inventory/refresh/XcodeSetup.h"

#include <algorithm>

namespace larkspur {

namespace {

/// What was read from the disk about a cask stays until it is read again, as long as its version is the same.
void keepFacts(const QList<Cask> &before, QList<Cask> &after) {
    QHash<QString, const Cask *> known;
    for (const Cask &cask : before)
        known.insert(cask.token, &cask);
    for (Cask &cask : after) {
        const Cask *old = known.value(cask.token);
        if (!old || old->version != cask.version)
            continue;
        cask.installedOn = old->installedOn;
        if (!cask.actualVersion) {
            cask.actualVersion = old->actualVersion;
            cask.actualBuild = old->actualBuild;
        }
    }
}

} // namespace

InventoryRefresh::InventoryRefresh(InventoryQueries &queries, PackageCache &cache, CaskEnrichment &enrichment,
                                   InventoryState &state, Logger &logger)
    : m_queries(queries)
    , m_cache(cache)
    , m_enrichment(enrichment)
    , m_state(state)
    , m_logger(logger) {}

void InventoryRefresh::showCache() {
    const auto formulae = m_cache.loadFormulae();
    const auto casks = m_cache.loadCasks();
    const auto outdated = m_cache.loadOutdated();
    if (!formulae && !casks && !outdated)
        return;
    m_state.update([&](Inventory &inventory) {
        inventory.hasLoaded = formulae || casks;
        inventory.isStale = (formulae && formulae->isExpired) || (casks && casks->isExpired) ||
                            (outdated && outdated->isExpired);
        if (formulae)
            inventory.installedFormulae = formulae->data;
        if (casks)
            inventory.installedCasks = casks->data;
        if (outdated)
            inventory.outdatedPackages = outdated->data;
    });
}

void InventoryRefresh::invalidateCache() {
    ++m_cacheGeneration;
    m_cache.invalidateFormulae();
    m_cache.invalidateCasks();
    m_cache.invalidateOutdated();
}

Task<> InventoryRefresh::refresh(StopToken stop) {
    const int wanted = m_started + 1;
    while (m_finished < wanted) {
        if (!m_isRunning)
            m_current = std::make_shared<Task<>>(runOnce(stop));
        const auto current = m_current;
        co_await *current;
    }
}

template <typename List>
Task<bool> InventoryRefresh::load(Task<Result<List>> query, QString what, List Inventory::*into) {
    auto list = co_await query;
    if (!list) {
        noteFailure(QStringLiteral("[Larkspur] Failed to load %1: ").arg(what), list.error());
        co_return false;
    }
    m_state.update([&](Inventory &inventory) { inventory.*into = std::move(*list); });
    co_return true;
}

Task<> InventoryRefresh::runOnce(StopToken stop) {
    begin();
    // Tasks start at once: all of these are under way before the first is awaited.
    Task<bool> loads[] = {
        loadFormulae(stop),
        loadCasks(stop),
        loadOutdated(stop),
        load(m_queries.leaves(stop), QStringLiteral("leaves"), &Inventory::leafPackages),
        load(m_queries.pinned(stop), QStringLiteral("pinned"), &Inventory::pinnedPackages),
        load(m_queries.services(stop), QStringLiteral("services"), &Inventory::services),
        loadTaps(stop),
        loadPrefix(stop),
    };
    for (Task<bool> &load : loads)
        co_await load;
    finish();
    co_await enrichCasks(stop);
    m_isRunning = false;
    m_finished = m_started;
}

void InventoryRefresh::begin() {
    m_isRunning = true;
    ++m_started;
    m_failures.clear();
    m_errors.clear();
    m_xcodeFailure = false;
    m_state.update([](Inventory &inventory) {
        inventory.isRefreshing = inventory.hasLoaded;
        inventory.isLoading = !inventory.hasLoaded;
        inventory.needsXcodeSetup = false; // until a query says so again
    });
}

void InventoryRefresh::finish() {
    m_state.update([this](Inventory &inventory) {
        inventory.isRefreshing = false;
        inventory.isLoading = false;
        inventory.isStale = inventory.isStale && !m_failures.isEmpty();
        inventory.hasLoaded = inventory.hasLoaded || m_failures.isEmpty();
        inventory.refreshFailures = m_failures;
        inventory.refreshErrors = m_errors;
        inventory.unreadablePackages = m_queries.unreadablePackages();
        inventory.needsXcodeSetup = m_xcodeFailure;
    });
}

void InventoryRefresh::noteFailure(const QString &prefix, const BrewError &error) {
    if (error.kind == BrewError::Kind::Stopped)
        return;
    m_logger.error(prefix + error.description());
    m_failures.append(prefix.section(QStringLiteral("] "), -1) + error.description());
    const AppError shown = AppError::from(error);
    const QString id = shown.stableIdentifier();
    const auto known = std::ranges::find_if(m_errors, [&](const RepeatedError &earlier) {
        return earlier.error == shown || (!id.isEmpty() && earlier.error.stableIdentifier() == id);
    });
    if (known == m_errors.end())
        m_errors.append({shown});
    else
        ++known->count;
}

Task<bool> InventoryRefresh::loadFormulae(StopToken stop) {
    const int generation = m_cacheGeneration;
    auto formulae = co_await m_queries.installedFormulae(std::move(stop));
    if (!formulae) {
        noteFailure(QStringLiteral("[Larkspur] Failed to load formulae: "), formulae.error());
        m_xcodeFailure = m_xcodeFailure || failsForXcode(formulae.error().text);
        co_return false;
    }
    if (generation == m_cacheGeneration)
        m_cache.saveFormulae(*formulae);
    m_state.update([&](Inventory &inventory) {
        inventory.installedFormulae = std::move(*formulae);
        inventory.hasLoaded = true;
    });
    co_return true;
}

Task<bool> InventoryRefresh::loadCasks(StopToken stop) {
    const int generation = m_cacheGeneration;
    auto casks = co_await m_queries.installedCasks(std::move(stop));
    if (!casks) {
        noteFailure(QStringLiteral("[Larkspur] Failed to load casks: "), casks.error());
        m_xcodeFailure = m_xcodeFailure || failsForXcode(casks.error().text);
        co_return false;
    }
    keepFacts(m_state.value().installedCasks, *casks);
    if (generation == m_cacheGeneration)
        m_cache.saveCasks(*casks);
    m_state.update([&](Inventory &inventory) {
        inventory.installedCasks = std::move(*casks);
        inventory.hasEnrichedCaskVersions = false;
    });
    co_return true;
}

Task<bool> InventoryRefresh::loadOutdated(StopToken stop) {
    const int generation = m_cacheGeneration;
    auto outdated = co_await m_queries.outdated(std::move(stop));
    if (!outdated) {
        noteFailure(QStringLiteral("[Larkspur] Failed to load outdated: "), outdated.error());
        m_xcodeFailure = m_xcodeFailure || failsForXcode(outdated.error().text);
        co_return false;
    }
    if (generation == m_cacheGeneration)
        m_cache.saveOutdated(*outdated);
    m_state.update([&](Inventory &inventory) { inventory.outdatedPackages = std::move(*outdated); });
    co_return true;
}

Task<bool> InventoryRefresh::loadTaps(StopToken stop) {
    auto tapQuery = m_queries.taps(stop);
    auto trustQuery = m_queries.trust(stop);
    auto nameQuery = m_queries.installedFullNames(stop);
    auto taps = co_await tapQuery;
    const auto trust = co_await trustQuery;
    const auto names = co_await nameQuery;
    if (!trust && trust.error().kind != BrewError::Kind::Stopped)
        m_logger.warn(
            QStringLiteral("Failed to run brew trust")); // older Homebrew: unknown, which hides nothing
    if (!taps) {
        noteFailure(QStringLiteral("[Larkspur] Failed to load taps: "), taps.error());
        co_return false;
    }
    const auto trustedTaps = trust ? std::optional(trustedTapNames(*taps, *trust)) : std::nullopt;
    const auto hidden = trust ? hiddenTaps(*taps, *trust, names.value_or(QStringList())) : QList<HiddenTap>();
    m_state.update([&](Inventory &inventory) {
        inventory.taps = std::move(*taps);
        inventory.trustedTaps = trustedTaps;
        inventory.hiddenUntrustedTaps = hidden;
    });
    co_return true;
}

Task<bool> InventoryRefresh::loadPrefix(StopToken stop) {
    if (m_state.value().brewPrefix)
        co_return true;
    const auto prefix = co_await m_queries.homebrewPrefix(std::move(stop));
    if (!prefix) {
        noteFailure(QStringLiteral("[Larkspur] Failed to load prefix: "), prefix.error());
        co_return false;
    }
    m_state.update([&](Inventory &inventory) { inventory.brewPrefix = *prefix; });
    co_return true;
}

Task<> InventoryRefresh::enrichCasks(StopToken stop) {
    const QString prefix = m_state.value().brewPrefix.value_or(QString());
    if (prefix.isEmpty() || stop.stop_requested())
        co_return;
    const auto facts = co_await m_enrichment.read(prefix, m_state.value().installedCasks);
    m_state.update([&](Inventory &inventory) {
        inventory.hasEnrichedCaskVersions = true;
        for (Cask &cask : inventory.installedCasks) {
            const CaskFacts known = facts.value(cask.token);
            cask.installedOn = known.installedOn ? known.installedOn : cask.installedOn;
            cask.actualVersion = known.actualVersion ? known.actualVersion : cask.actualVersion;
            cask.actualBuild = known.actualBuild ? known.actualBuild : cask.actualBuild;
        }
    });
}

} // namespace larkspur
