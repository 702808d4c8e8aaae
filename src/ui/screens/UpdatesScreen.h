#pragma once

#include "ui/screens/PackageScreen.h"

class QPushButton;

namespace larkspur {
class OperationRun;
}

namespace larkspur::ui {

/// What is outdated, and the buttons that change that.
class UpdatesScreen : public PackageScreen {
    Q_OBJECT
  public:
    struct Services {
        InventoryState &inventory;
        InventoryQueries &queries;
        PackageActions::Services actions;
    };

    explicit UpdatesScreen(Services services);

  protected:
    void reload() override;

  private:
    void checkForUpdates();
    void endCheck(const OperationRun &run);
    void updateButtons();
    void showEmptyState();
    QList<PackageRow> upgradable() const;

    Services m_services;
    QPushButton *m_check;
    QPushButton *m_upgradeSelected;
    QPushButton *m_upgradeAll;
    bool m_isChecking = false;
    QString m_problem;
};

} // namespace larkspur::ui
