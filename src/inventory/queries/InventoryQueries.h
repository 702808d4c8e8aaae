#pragma once

#include "core/async/FairSemaphore.h"
#include "core/async/Task.h"
#include "core/brew/BrewArguments.h"
#include "core/errors/Result.h"
#include "core/process/ShellResult.h"
#include "inventory/decoding/ListDecoders.h"
#include "inventory/records/BrewServiceInfo.h"
#include "inventory/records/OutdatedPackage.h"
#include "inventory/records/Package.h"
#include "inventory/records/TapInfo.h"

#include <QSet>

namespace larkspur {

class BrewService;
class Logger;
class Preferences;

/// What a search for available packages found, both lists in Homebrew's order.
struct SearchHits {
    QStringList formulae;
    QStringList casks;
};

/// The read side of Homebrew: one fixed command line per question, decoded off the main thread. Changes
/// nothing, takes no lock, and runs no more queries at once than there are cores. A stop that is requested
/// ends the query.
class InventoryQueries {
  public:
    InventoryQueries(BrewService &brew, Preferences &preferences, Logger &logger);

    Task<Result<QList<Formula>>> installedFormulae(StopToken stop = {});
    Task<Result<QList<Cask>>> installedCasks(StopToken stop = {});
    enum class SelfUpdating { AsPreferred, Included };
    /// Casks that update themselves are in the answer as the person prefers, or in any case.
    Task<Result<QList<OutdatedPackage>>> outdated(StopToken stop = {},
                                                  SelfUpdating casks = SelfUpdating::AsPreferred);
    Task<Result<QSet<QString>>> leaves(StopToken stop = {});
    /// Short names of pinned packages of both kinds.
    Task<Result<QSet<QString>>> pinned(StopToken stop = {});
    Task<Result<QList<BrewServiceInfo>>> services(StopToken stop = {});
    /// One of them by name; a name that is not in the list is a failure of its own kind.
    Task<Result<BrewServiceInfo>> service(QString name, StopToken stop = {});
    Task<Result<QList<TapInfo>>> taps(StopToken stop = {});
    Task<Result<QStringList>> tapNames(StopToken stop = {});
    /// Fails where this Homebrew has no such command: the trust state is then unknown.
    Task<Result<TrustState>> trust(StopToken stop = {});
    /// Full names of everything installed, packages of untrusted taps included.
    Task<Result<QStringList>> installedFullNames(StopToken stop = {});
    Task<Result<Formula>> formulaDetails(QString name, StopToken stop = {});
    Task<Result<Cask>> caskDetails(QString token, StopToken stop = {});
    /// Full names of the installed formulae that need this one.
    Task<Result<QStringList>> dependents(QString name, StopToken stop = {});
    Task<Result<SearchHits>> search(QString text, StopToken stop = {});
    Task<Result<QString>> homebrewPrefix(StopToken stop = {});

    /// How many entries of the last answers about installed packages could not be read and are left out.
    int unreadablePackages() const { return m_unreadableFormulae + m_unreadableCasks; }

    /// What was decoded, with a line for each element that was left out.
    template <typename T>
    struct WithFailures {
        T value;
        QStringList failures;
    };

  private:
    /// Quick: brew answers from its launcher script within milliseconds and needs no core of its own.
    enum class Cost { Ordinary, Quick };
    Task<Result<ShellResult>> ask(BrewArguments arguments, StopToken stop, Cost cost = Cost::Ordinary);
    Task<Result<QStringList>> askForNames(BrewArguments arguments, StopToken stop,
                                          Cost cost = Cost::Ordinary);
    Task<Result<QStringList>> searchKind(BrewWord kind, SearchText text, StopToken stop);
    /// The decoded value; what failed is logged, and counted where that is wanted.
    template <typename T>
    Result<T> checked(Decoded<WithFailures<T>> decoded, const QString &logPrefix, int *unreadable = nullptr);
    void logLeftOut(const QString &what);

    BrewService &m_brew;
    Preferences &m_preferences;
    Logger &m_logger;
    FairSemaphore m_atOnce;
    int m_unreadableFormulae = 0;
    int m_unreadableCasks = 0;
};

} // namespace larkspur
