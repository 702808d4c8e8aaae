#include "ui/models/PackageRow.h"

#include "core/brew/PackageName.h"
#include "userdata/UserDataManager.h"

namespace larkspur::ui {

namespace {

PackageRow rowFor(const Formula &formula) {
    PackageRow row;
    row.id = {formula.name, false};
    row.fullName = formula.fullName;
    row.title = formula.fullName;
    row.description = formula.description.value_or(QString());
    row.version = formula.version;
    row.installed = true;
    row.dependency = formula.installedAsDependency;
    row.installedOn = formula.installedOn.value_or(QDateTime());
    return row;
}

PackageRow rowFor(const Cask &cask) {
    PackageRow row;
    row.id = {cask.token, true};
    row.fullName = cask.token;
    row.title = cask.name.isEmpty() ? cask.token : cask.name.first();
    row.description = cask.description.value_or(QString());
    row.version = cask.version;
    row.installed = true;
    row.installedOn = cask.installedOn.value_or(QDateTime());
    return row;
}

bool belongs(const PackageRow &row, PackageSelection selection) {
    switch (selection) {
    case PackageSelection::Formulae:
        return !row.id.isCask;
    case PackageSelection::Casks:
        return row.id.isCask;
    case PackageSelection::Outdated:
        return !row.newVersion.isEmpty() && row.snooze.isEmpty();
    case PackageSelection::Snoozed:
        return !row.snooze.isEmpty();
    case PackageSelection::Pinned:
        return row.pinned;
    case PackageSelection::Everything:
        break;
    }
    return true;
}

} // namespace

bool PackageRow::matches(const QString &text) const {
    return text.isEmpty() || title.contains(text, Qt::CaseInsensitive) ||
           id.name.contains(text, Qt::CaseInsensitive) || description.contains(text, Qt::CaseInsensitive);
}

QList<PackageRow> packageRows(const Inventory &inventory, const UserDataManager &userData,
                              PackageSelection selection) {
    QHash<QString, const SnoozedPackage *> snoozes;
    for (const SnoozedPackage &snooze : userData.snoozedPackages())
        snoozes.insert(snooze.packageName, &snooze);
    const QDateTime now = userData.now();
    QHash<PackageId, const OutdatedPackage *> outdated;
    for (const OutdatedPackage &package : inventory.outdatedPackages)
        outdated.insert(package.id(), &package);
    QList<PackageRow> rows;
    const auto add = [&](PackageRow row) {
        const OutdatedPackage *update = outdated.take(row.id);
        row.newVersion = update ? update->currentVersion : QString();
        const SnoozedPackage *snooze = update ? snoozes.value(row.id.name) : nullptr;
        if (snooze && snooze->isInForce(row.newVersion, now))
            row.snooze = snooze->description(now);
        row.pinned = (update && update->pinned) || inventory.pinnedPackages.contains(row.id.name);
        row.bytes = inventory.packageInstalledSizes.value(row.id, -1);
        if (belongs(row, selection))
            rows.append(std::move(row));
    };
    for (const Formula &formula : inventory.installedFormulae)
        add(rowFor(formula));
    for (const Cask &cask : inventory.installedCasks)
        add(rowFor(cask));
    // An update for a package that the other list does not hold (yet) is an update all the same.
    const auto unlisted = outdated.values();
    for (const OutdatedPackage *update : unlisted) {
        PackageRow row = availableRow(update->fullName, update->isCask);
        row.installed = true;
        row.version = update->installedVersions.isEmpty() ? QString() : update->installedVersions.last();
        outdated.insert(row.id, update);
        add(std::move(row));
    }
    return rows;
}

PackageRow availableRow(const QString &name, bool isCask) {
    PackageRow row;
    row.id = {shortName(name), isCask};
    row.fullName = name;
    row.title = name;
    return row;
}

} // namespace larkspur::ui
