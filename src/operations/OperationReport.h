#pragma once

#include "operations/OperationRequest.h"

#include <algorithm>

namespace larkspur {

/// How the work on one package has ended.
enum class PackageEnd {
    Done,
    Failed,
    Cancelled, ///< the person did not give the password that it needs
};

struct PackageResult {
    PackageTarget package;
    PackageEnd end = PackageEnd::Done;

    bool operator==(const PackageResult &) const = default;
};

/// What became of an operation, beside its output.
struct OperationReport {
    /// One for each package that was begun; one without a name for the upgrade of all.
    QList<PackageResult> packages = {};
    /// Running services of formulae that were upgraded: they run the old files until they are restarted.
    QStringList servicesToRestart = {};
    bool hasWarnings = false; ///< of the last run of a package, or because the state is not what it should be

    int count(PackageEnd end) const {
        return static_cast<int>(std::ranges::count(packages, end, &PackageResult::end));
    }
    bool wasCancelled() const { return count(PackageEnd::Cancelled) > 0; }
};

} // namespace larkspur
