#pragma once

#include "core/errors/AppError.h"
#include "inventory/records/BrewServiceInfo.h"
#include "inventory/records/OutdatedPackage.h"
#include "inventory/records/Package.h"
#include "inventory/records/TapInfo.h"

#include <QHash>
#include <QSet>

#include <optional>

namespace larkspur {

/// A failure, and how often it came.
struct RepeatedError {
    AppError error;
    int count = 1;

    bool operator==(const RepeatedError &) const = default;
};

enum class PackageSortOrder { Name, InstallDate, Size };

/// Everything that is known about the installed packages. Never cleared, only replaced list by list.
struct Inventory {
    std::optional<QString> brewPath;
    std::optional<QString> brewVersion;
    std::optional<QString> latestBrewVersion;
    std::optional<QDateTime> lastBrewReleaseCheck;
    std::optional<QString> brewPrefix;

    bool isLoading = false;    ///< the first load, when nothing is shown yet
    bool isRefreshing = false; ///< a later one, behind the lists that are shown
    bool isStale = false;      ///< the lists come from an expired cache; fresh ones are awaited
    bool hasLoaded = false;    ///< there are lists to show

    QList<Formula> installedFormulae;
    QList<Cask> installedCasks;
    QList<OutdatedPackage> outdatedPackages;
    QList<HiddenTap> hiddenUntrustedTaps;
    bool hasEnrichedCaskVersions = false;
    QList<BrewServiceInfo> services;
    QList<TapInfo> taps;
    QSet<QString> pinnedPackages;             ///< short names
    QSet<QString> leafPackages;               ///< short names
    std::optional<QSet<QString>> trustedTaps; ///< absent: unknown, which hides nothing

    QHash<PackageId, qint64> packageInstalledSizes; ///< bytes
    bool hasLoadedPackageSizes = false;
    bool isLoadingPackageSizes = false;

    /// Failures of the last refresh, one line each; the lists they concern are those from before.
    QStringList refreshFailures;
    /// The same for the interface: what is the same to a person stands here once.
    QList<RepeatedError> refreshErrors;
    /// How many installed packages Homebrew told about in words that could not be read.
    int unreadablePackages = 0;
    /// Homebrew said that Xcode's tools are not set up: nothing can be read before they are.
    bool needsXcodeSetup = false;

    const Formula *formula(const QString &shortOrFullName) const;
    const Cask *cask(const QString &token) const;
    const OutdatedPackage *outdated(const PackageId &id) const;
    bool isInstalled(const PackageId &id) const {
        return id.isCask ? cask(id.name) != nullptr : formula(id.name) != nullptr;
    }
};

} // namespace larkspur
