#pragma once

#include "ui/models/PackageRow.h"

#include <QObject>

class QMenu;
class QWidget;

namespace larkspur {
class KegPreservationManager;
class OperationCenter;
class OperationPlanner;
class Preferences;
class TaskScope;
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
        OperationPlanner &planner;
        KegPreservationManager &kegs;
        Preferences &preferences;
        TaskScope &tasks;
    };

    explicit PackageActions(Services services, QObject *parent = nullptr);

    void install(const QList<PackageRow> &rows);
    void upgrade(const QList<PackageRow> &rows, QWidget *window);
    /// `outdated`: everything that is, pinned packages included.
    void upgradeAll(const QList<PackageRow> &outdated, QWidget *window);
    void reinstall(const QList<PackageRow> &rows);
    void setPinned(const QList<PackageRow> &rows, bool pinned);
    void uninstall(const QList<PackageRow> &rows, QWidget *window);

    /// Versions other than the installed one to which a formula can be put back, newest copy first.
    QStringList rollbackVersions(const PackageRow &row) const;
    void rollBack(const PackageRow &row, const QString &version, QWidget *window);

    /// Fills a menu with what fits all or some of the rows.
    void fillMenu(QMenu *menu, const QList<PackageRow> &rows, QWidget *window);

  private:
    /// Starts the operation once the person has seen what it will do.
    void startAfterPlan(const OperationRequest &request, QWidget *window);

    Services m_services;
};

} // namespace larkspur::ui
