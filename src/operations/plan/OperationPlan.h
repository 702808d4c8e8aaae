#pragma once

#include <QList>
#include <QString>
#include <QStringList>

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
    QStringList pinned = {};     ///< to be unpinned for the operation, if not held back
    bool leavesPinned = false;   ///< what is pinned is held back
    QStringList dependents = {}; ///< stay installed although they need what is removed
    QStringList privileged = {}; ///< casks that are likely to want administrator rights
    std::optional<QString> downloadSize = std::nullopt; ///< as Homebrew prints it
    QString failure = {};                               ///< why Homebrew told nothing; empty if it did

    /// Of everything that changes.
    QStringList names() const;
    bool needsAdministrator() const { return !privileged.isEmpty(); }
};

/// What a person is asked before an operation starts.
struct PlanQuestion {
    QString text;   ///< "Upgrade wget?"
    QString action; ///< what the button says: "Upgrade"
    bool removes = false;
    bool isMust = false;  ///< asked even of somebody who does not want to see plans
    QString refusal = {}; ///< why nothing is begun where nobody can be asked; empty: it is
};

/// The plan in words, one thought per line: for the terminal and for screen readers.
QStringList describePlan(const OperationPlan &plan);

} // namespace larkspur
