#pragma once

#include "core/errors/BrewError.h"
#include "operations/outcome/Verdict.h"
#include "operations/run/PackageTarget.h"

#include <QList>

#include <optional>

namespace larkspur {

/// How the work on one package has ended, the best first.
enum class PackageEnd {
    Done,
    DoneWithWarnings,
    Cancelled, ///< the person did not give the password that it needs
    Stopped,   ///< the person ended it while it was under way
    Failed,
};

/// What was to be done to a package, for those who keep account of it.
enum class Deed { None, Installed, Upgraded, Uninstalled, RolledBack, CatalogueUpdated };

struct PackageResult {
    PackageTarget package;
    PackageEnd end = PackageEnd::Done;
    Deed deed = Deed::None;
    /// Output of the run that decided; empty where it is done.
    QStringList lines = {};
    bool isUnchanged = false; ///< there was nothing to do

    bool isDone() const { return end == PackageEnd::Done || end == PackageEnd::DoneWithWarnings; }
    bool operator==(const PackageResult &) const = default;
};

/// What became of an operation. Its outcome follows from this alone.
struct OperationReport {
    /// One for each package that was begun; one without a name for a command that names none.
    QList<PackageResult> packages = {};
    /// Running services of formulae that were upgraded: they run the old files until they are restarted.
    QStringList servicesToRestart = {};
    bool hasWarnings = false; ///< about what is no single package's: a restore point, a link, a note
    /// Why it did not come to its end: it was stopped, or brew could not be run.
    std::optional<BrewError> failure = std::nullopt;

    int count(PackageEnd end) const;
    int countDone() const;
    bool hasFailed() const { return count(PackageEnd::Failed) > 0; }
    /// The person gave no password, and nothing else has come of it.
    bool wasCancelled() const;
    bool wasStopped() const { return failure && failure->kind == BrewError::Kind::Stopped; }
    /// Never better than the worst of the packages.
    OperationOutcome outcome() const;
    /// "2 done, 1 failed", for several packages.
    QString tally() const;
};

} // namespace larkspur
