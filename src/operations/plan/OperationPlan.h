#pragma once

#include "operations/OperationRequest.h"

#include <optional>

namespace larkspur {

/// One package that an operation will change.
struct PlannedChange {
    enum class Role {
        Named,      ///< asked for
        Dependency, ///< comes along, because what was asked for needs it
        Dependent,  ///< comes along, because it needs what was asked for
    };
    QString name; ///< as Homebrew prints it: tap-qualified outside the core tap
    QString from; ///< installed version or versions
    QString to;   ///< empty for a removal
    Role role = Role::Named;

    bool operator==(const PlannedChange &) const = default;
};

/// What an operation is going to do, as far as Homebrew tells beforehand.
struct OperationPlan {
    QList<PlannedChange> changes = {};
    QStringList pinned = {};     ///< held back, or to be unpinned for the operation
    QStringList dependents = {}; ///< stay installed although they need what is removed
    QStringList privileged = {}; ///< casks that are likely to want administrator rights
    std::optional<QString> downloadSize = std::nullopt; ///< as Homebrew prints it
    QString failure = {};                               ///< why Homebrew told nothing; empty if it did

    bool needsAdministrator() const { return !privileged.isEmpty(); }
};

/// The changes in the output of `brew upgrade --dry-run`; adds to what the plan holds.
void readDryRun(const QString &output, OperationPlan &plan);

/// The plan in words, one thought per line: for the terminal and for screen readers.
QStringList describePlan(const OperationRequest &request, const OperationPlan &plan);

} // namespace larkspur
