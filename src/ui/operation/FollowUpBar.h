#pragma once

#include "operations/run/PackageTarget.h"

#include <QList>
#include <QWidget>

class QPushButton;

namespace larkspur {
class InventoryState;
class KegPreservationManager;
class OperationCenter;
class OperationRun;
class UserDataManager;
struct PackageServices;
} // namespace larkspur

namespace larkspur::ui {

/// What the person may want to do next about an operation that has ended: restart services that run old
/// files, keep what was rolled back, roll back a failed upgrade, or go on in a terminal.
class FollowUpBar : public QWidget {
    Q_OBJECT
  public:
    struct Services {
        OperationCenter &operations;
        const PackageServices &packages;
        InventoryState &inventory;
        KegPreservationManager &kegs;
        UserDataManager &userData;
    };
    explicit FollowUpBar(Services services, QWidget *parent = nullptr);

    /// Null: nothing is offered.
    void follow(const OperationRun *run);

  private:
    void offer();
    void skip();
    QString versionToSkip(const PackageTarget &package) const;
    /// What has been rolled back.
    QList<PackageTarget> rolledBack() const;
    /// What can be, after an upgrade of it that failed.
    QList<PackageTarget> rollbackTargets() const;
    QString commandForTerminal() const;

    Services m_services;
    const OperationRun *m_run = nullptr;
    bool m_hasSkipped = false;
    QPushButton *m_restart;
    QPushButton *m_skip;
    QPushButton *m_pin;
    QPushButton *m_rollBack;
    QPushButton *m_terminal;
};

} // namespace larkspur::ui
