#pragma once

#include <QTreeWidget>

namespace larkspur {
struct Inventory;
}

namespace larkspur::ui {

/// The screens in their groups, with the numbers of what they hold.
class Sidebar : public QTreeWidget {
    Q_OBJECT
  public:
    explicit Sidebar(QWidget *parent = nullptr);

    void setCurrentScreen(const QString &id);
    void updateCounts(const Inventory &inventory);
    void setSimpleMode(bool simple);

  Q_SIGNALS:
    void screenChosen(const QString &id);

  private:
    QTreeWidgetItem *itemOf(const QString &id) const;
};

} // namespace larkspur::ui
