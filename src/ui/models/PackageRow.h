#pragma once

#include "inventory/state/Inventory.h"
#include "operations/run/PackageTarget.h"

namespace larkspur {
class UserDataManager;
}

namespace larkspur::ui {

/// One package as a list shows it.
struct PackageRow {
    PackageId id;
    QString fullName; ///< for commands
    QString title;    ///< a cask's display name, a formula's full name
    QString description;
    QString version;
    QString newVersion; ///< empty: up to date
    QString snooze;     ///< why its update is not shown, in words; empty where it is shown
    bool installed = false;
    bool pinned = false;
    bool dependency = false; ///< installed only because others need it
    QDateTime installedOn;
    qint64 bytes = -1; ///< -1: not measured

    PackageTarget target() const {
        return {fullName, id.isCask, version, newVersion.isEmpty() ? version : newVersion, pinned};
    }
    bool matches(const QString &text) const;
    bool operator==(const PackageRow &) const = default;
};

/// Outdated packages whose update is snoozed are in a list of their own.
enum class PackageSelection { Formulae, Casks, Outdated, Snoozed, Pinned, Everything };

/// The rows that a list of the inventory holds. Linear in the number of packages.
QList<PackageRow> packageRows(const Inventory &inventory, const UserDataManager &userData,
                              PackageSelection selection);

/// A package that a search found and that is not installed.
PackageRow availableRow(const QString &name, bool isCask);

} // namespace larkspur::ui
