#pragma once

#include "operations/run/Operation.h"
#include "ui/models/PackageRow.h"
#include "userdata/Snooze.h"

#include <QObject>

class QMenu;
class QWidget;

namespace larkspur {
class KegPreservationManager;
class OperationCenter;
class Preferences;
class TaskScope;
class UserDataManager;
struct PackageServices;
} // namespace larkspur

namespace larkspur::ui {

/// What can be done with packages, for buttons and menus alike. Before an upgrade or a removal a sheet shows
/// what will happen; where the person has switched it off, a removal and a pinned package are asked for all
/// the same.
class PackageActions : public QObject {
    Q_OBJECT
  public:
    struct Services {
        OperationCenter &operations;
        const PackageServices &packages;
        KegPreservationManager &kegs;
        UserDataManager &userData;
        Preferences &preferences;
        TaskScope &tasks;
    };

    explicit PackageActions(Services services, QObject *parent = nullptr);

    void install(const QList<PackageRow> &rows);
    void upgrade(const QList<PackageRow> &rows, QWidget *window);
    /// Everything that is outdated, without what is pinned or snoozed. Refused while the list of what is
    /// snoozed is damaged.
    void upgradeAll(const Inventory &inventory, QWidget *window);
    void reinstall(const QList<PackageRow> &rows);
    void setPinned(const QList<PackageRow> &rows, bool pinned);
    void snooze(const QList<PackageRow> &rows, const SnoozeType &type);
    void unsnooze(const QList<PackageRow> &rows);
    void uninstall(const QList<PackageRow> &rows, QWidget *window);

    /// Versions other than the installed one to which a formula can be put back, newest copy first.
    QStringList rollbackVersions(const PackageRow &row) const;
    void rollBack(const PackageRow &row, const QString &version, QWidget *window);

    /// Fills a menu with what fits all or some of the rows.
    void fillMenu(QMenu *menu, const QList<PackageRow> &rows, QWidget *window);

    UserDataManager &userData() const { return m_services.userData; }

  private:
    void addUpdateActions(QMenu *menu, const QList<PackageRow> &outdated, QWidget *window);
    /// Starts the operation once the person has seen what it will do.
    void startAfterPlan(const OperationPtr &operation, QWidget *window);

    Services m_services;
};

} // namespace larkspur::ui
