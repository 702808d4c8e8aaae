#pragma once

#include "ui/models/PackageRow.h"

#include <QObject>

class QMenu;
class QWidget;

namespace larkspur {
class OperationCenter;
}

namespace larkspur::ui {

/// What can be done with packages, for buttons and menus alike. A removal asks first.
class PackageActions : public QObject {
    Q_OBJECT
  public:
    explicit PackageActions(OperationCenter &operations, QObject *parent = nullptr);

    void install(const QList<PackageRow> &rows);
    void upgrade(const QList<PackageRow> &rows);
    /// `outdated`: how many packages that will be.
    void upgradeAll(int outdated);
    void reinstall(const QList<PackageRow> &rows);
    void setPinned(const QList<PackageRow> &rows, bool pinned);
    void uninstall(const QList<PackageRow> &rows, QWidget *window);

    /// Fills a menu with what fits all or some of the rows.
    void fillMenu(QMenu *menu, const QList<PackageRow> &rows, QWidget *window);

  private:
    OperationCenter &m_operations;
};

} // namespace larkspur::ui
