#include "ui/ScreenRegistry.h"

#include "app/Larkspur.h"
#include "ui/screens/HistoryScreen.h"
#include "ui/screens/InstalledScreen.h"
#include "ui/screens/SearchScreen.h"
#include "ui/screens/ServicesScreen.h"
#include "ui/screens/TapsScreen.h"
#include "ui/screens/UpdatesScreen.h"
#include "ui/timemachine/TimeMachineScreen.h"
#include "userdata/UpdateSelection.h"

#include <QCoreApplication>

namespace larkspur::ui {

namespace {

QString tr(const char *text) {
    return QCoreApplication::translate("Screens", text);
}

PackageActions::Services actionServices(Larkspur &larkspur) {
    return {larkspur.operations(), larkspur.packages(),    larkspur.kegs(),
            larkspur.userData(),   larkspur.preferences(), larkspur.tasks()};
}

Screen *makeInstalled(Larkspur &larkspur, InstalledKind kind) {
    return new InstalledScreen(
        kind, {larkspur.inventory(), larkspur.queries(), larkspur.packageSizes(), actionServices(larkspur)});
}

QList<ScreenEntry> makeRegistry() {
    return {
        {.id = QStringLiteral("updates"),
         .group = tr("Packages"),
         .title = tr("Updates"),
         .icon = QStringLiteral("updates"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+1")),
         .inSimpleMode = true,
         .count =
             [](const Inventory &inventory, const UserDataManager &userData) {
                 return selectUpdates(inventory.outdatedPackages, userData).shown.size();
             },
         .make = [](Larkspur &larkspur) -> Screen * {
             return new UpdatesScreen({larkspur.inventory(), larkspur.queries(), actionServices(larkspur)});
         }},
        {.id = QStringLiteral("formulae"),
         .group = tr("Packages"),
         .title = tr("Formulae"),
         .icon = QStringLiteral("formulae"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+2")),
         .inSimpleMode = true,
         .count = [](const Inventory &inventory,
                     const UserDataManager &) { return inventory.installedFormulae.size(); },
         .make = [](Larkspur &larkspur) { return makeInstalled(larkspur, InstalledKind::Formulae); }},
        {.id = QStringLiteral("casks"),
         .group = tr("Packages"),
         .title = tr("Casks"),
         .icon = QStringLiteral("casks"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+3")),
         .inSimpleMode = true,
         .count = [](const Inventory &inventory,
                     const UserDataManager &) { return inventory.installedCasks.size(); },
         .make = [](Larkspur &larkspur) { return makeInstalled(larkspur, InstalledKind::Casks); }},
        {.id = QStringLiteral("pinned"),
         .group = tr("Packages"),
         .title = tr("Pinned"),
         .icon = QStringLiteral("pinned"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+4")),
         .inSimpleMode = false,
         .count = [](const Inventory &inventory,
                     const UserDataManager &) { return inventory.pinnedPackages.size(); },
         .make = [](Larkspur &larkspur) { return makeInstalled(larkspur, InstalledKind::Pinned); }},
        {.id = QStringLiteral("snoozed"),
         .group = tr("Packages"),
         .title = tr("Snoozed"),
         .icon = QStringLiteral("snoozed"),
         .shortcut = {},
         .inSimpleMode = false,
         .count =
             [](const Inventory &inventory, const UserDataManager &userData) {
                 return selectUpdates(inventory.outdatedPackages, userData).snoozed.size();
             },
         .make = [](Larkspur &larkspur) { return makeInstalled(larkspur, InstalledKind::Snoozed); }},
        {.id = QStringLiteral("search"),
         .group = tr("Discover"),
         .title = tr("Search"),
         .icon = QStringLiteral("search"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+5")),
         .inSimpleMode = true,
         .count = {},
         .make = [](Larkspur &larkspur) -> Screen * {
             return new SearchScreen({larkspur.inventory(), larkspur.queries(), actionServices(larkspur)});
         }},
        {.id = QStringLiteral("services"),
         .group = tr("System"),
         .title = tr("Services"),
         .icon = QStringLiteral("services"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+6")),
         .inSimpleMode = false,
         .count = [](const Inventory &inventory,
                     const UserDataManager &) { return inventory.services.size(); },
         .make = [](Larkspur &larkspur) -> Screen * { return new ServicesScreen(larkspur.inventory()); }},
        {.id = QStringLiteral("taps"),
         .group = tr("System"),
         .title = tr("Taps"),
         .icon = QStringLiteral("taps"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+7")),
         .inSimpleMode = false,
         .count = [](const Inventory &inventory, const UserDataManager &) { return inventory.taps.size(); },
         .make = [](Larkspur &larkspur) -> Screen * {
             return new TapsScreen(larkspur.inventory(), larkspur.preferences());
         }},
        {.id = QStringLiteral("timemachine"),
         .group = tr("System"),
         .title = tr("Time Machine"),
         .icon = QStringLiteral("timemachine"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+8")),
         .inSimpleMode = true,
         .count = {},
         .make = [](Larkspur &larkspur) -> Screen * {
             return new TimeMachineScreen({larkspur.snapshots(), larkspur.kegs(), larkspur.operations(),
                                           larkspur.packages(), larkspur.tasks()});
         }},
        {.id = QStringLiteral("history"),
         .group = tr("System"),
         .title = tr("History"),
         .icon = QStringLiteral("history"),
         .shortcut = QKeySequence(QStringLiteral("Ctrl+9")),
         .inSimpleMode = true,
         .count = {},
         .make = [](Larkspur &larkspur) -> Screen * {
             return new HistoryScreen(larkspur.inventory(), actionServices(larkspur));
         }},
    };
}

} // namespace

const QList<ScreenEntry> &screenRegistry() {
    static const QList<ScreenEntry> registry = makeRegistry();
    return registry;
}

} // namespace larkspur::ui
