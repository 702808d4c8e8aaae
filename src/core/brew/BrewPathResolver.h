#pragma once

#include "core/async/Task.h"
#include "core/settings/Locations.h"

#include <QObject>

#include <memory>
#include <optional>

namespace larkspur {

class Logger;
class Preferences;
class ShellExecutor;

/// Decides which brew executable is driven, and remembers the answer until the person names another one.
class BrewPathResolver : public QObject {
    Q_OBJECT
  public:
    BrewPathResolver(Locations locations, Preferences &preferences, ShellExecutor &shell, Logger &logger);

    /// The path of brew, or nothing. Concurrent first callers share one search.
    Task<std::optional<QString>> resolve();

  private:
    struct Found {
        QString path;
        QString provenance;
    };
    Task<bool> search();
    std::optional<Found> fromPreference() const;
    std::optional<Found> fromKnownPaths() const;
    Task<std::optional<Found>> fromSearchPath();
    void forget();

    Locations m_locations;
    Preferences &m_preferences;
    ShellExecutor &m_shell;
    Logger &m_logger;
    std::shared_ptr<Task<bool>> m_search;
    std::optional<QString> m_cachedPath;
    bool m_hasChecked = false;
    int m_generation = 0; ///< grows when the answer is forgotten
};

} // namespace larkspur
