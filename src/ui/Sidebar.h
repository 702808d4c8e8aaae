#pragma once

#include <QTreeWidget>

namespace larkspur {
struct Inventory;
class UserDataManager;
} // namespace larkspur

namespace larkspur::ui {

/// The screens in their groups, with the numbers of what they hold.
class Sidebar : public QTreeWidget {
    Q_OBJECT
  public:
    explicit Sidebar(QWidget *parent = nullptr);

    void setCurrentScreen(const QString &id);
    void updateCounts(const Inventory &inventory, const UserDataManager &userData);
    void setSimpleMode(bool simple);

  Q_SIGNALS:
    void screenChosen(const QString &id);

  private:
    QTreeWidgetItem *itemOf(const QString &id) const;
};

} // namespace larkspur::ui
