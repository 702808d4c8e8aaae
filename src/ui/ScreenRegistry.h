#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace larkspur {
class Larkspur;
class UserDataManager;
struct Inventory;
} // namespace larkspur

namespace larkspur::ui {

class Screen;

/// One row of the table that sidebar, View menu and shortcuts derive from.
struct ScreenEntry {
    QString id;
    QString group;
    QString title;
    QString icon;
    QKeySequence shortcut;
    bool inSimpleMode = false;
    /// Number beside the title in the sidebar; null function: none.
    std::function<qsizetype(const Inventory &, const UserDataManager &)> count;
    std::function<Screen *(Larkspur &)> make;
};

/// Every screen, in the order of the sidebar.
const QList<ScreenEntry> &screenRegistry();

} // namespace larkspur::ui
