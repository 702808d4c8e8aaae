#include "core/brew/BrewPathResolver.h"

#include "core/log/Logger.h"
#include "core/process/ShellExecutor.h"
#include "core/settings/Preferences.h"

#include <QFileInfo>

namespace larkspur {

namespace {

bool isExecutableFile(const QString &path) {
    const QFileInfo file(path);
    return file.isFile() && file.isExecutable();
}

} // namespace

BrewPathResolver::BrewPathResolver(Locations locations, Preferences &preferences, ShellExecutor &shell,
                                   Logger &logger)
    : m_locations(std::move(locations))
    , m_preferences(preferences)
    , m_shell(shell)
    , m_logger(logger) {
    connect(&preferences, &Preferences::changed, this, [this](const QString &key) {
        if (key == keys::brewPathOverride)
            forget();
    });
}

Task<std::optional<QString>> BrewPathResolver::resolve() {
    while (!m_hasChecked) {
        if (!m_search)
            m_search = std::make_shared<Task<bool>>(search());
        const auto searching = m_search;
        co_await *searching;
    }
    co_return std::optional(m_cachedPath); // a copy: QCoro moves out of what co_return names
}

Task<bool> BrewPathResolver::search() {
    const int generation = m_generation;
    std::optional<Found> found = fromPreference();
    if (!found)
        found = fromKnownPaths();
    if (!found && m_locations.searchPathForBrew)
        found = co_await fromSearchPath();
    if (generation != m_generation)
        co_return false; // the person has named another path meanwhile
    if (found)
        m_logger.info(QStringLiteral("brew path resolved: ") + found->path + found->provenance);
    else
        m_logger.error(
            QStringLiteral("brew path resolution failed: brew not found at known paths or via which"));
    m_cachedPath = found ? std::optional(found->path) : std::nullopt;
    m_hasChecked = true;
    m_search.reset();
    co_return found.has_value();
}

std::optional<BrewPathResolver::Found> BrewPathResolver::fromPreference() const {
    const QString path = m_preferences.string(keys::brewPathOverride);
    if (path.isEmpty())
        return std::nullopt;
    if (isExecutableFile(path))
        return Found{path, QStringLiteral(" (user override)")};
    m_logger.warn(QStringLiteral("brew path override set but not executable, falling back to auto-detect: ") +
                  path);
    return std::nullopt;
}

std::optional<BrewPathResolver::Found> BrewPathResolver::fromKnownPaths() const {
    for (const QString &path : m_locations.knownBrewPaths)
        if (isExecutableFile(path))
            return Found{path, QStringLiteral(" (known path)")};
    return std::nullopt;
}

Task<std::optional<BrewPathResolver::Found>> BrewPathResolver::fromSearchPath() {
    ShellCommand which{.program = QStringLiteral("/usr/bin/which"), .arguments = {QStringLiteral("brew")}};
    const ShellResult result = co_await m_shell.run(std::move(which));
    const QString path = result.standardOutput().trimmed();
    if (!result.succeeded() || path.isEmpty())
        co_return std::nullopt;
    co_return Found{path, QStringLiteral(" (via which)")};
}

void BrewPathResolver::forget() {
    ++m_generation;
    m_hasChecked = false;
    m_cachedPath.reset();
    m_search.reset();
}

} // namespace larkspur
