#pragma once

#include "inventory/state/DependencyGraph.h"

#include <QTreeWidget>

namespace larkspur::ui {

/// What a formula needs, as a tree as tall as its open rows. A row gets its children when it is opened: a few
/// formulae can make a tree of a million rows.
class DependencyTree : public QTreeWidget {
    Q_OBJECT
  public:
    DependencyTree(DependencyGraph graph, const Formula &formula, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

  Q_SIGNALS:
    void packageRequested(const QString &name);

  protected:
    void keyPressEvent(QKeyEvent *event) override;

  private:
    void addRows(QTreeWidgetItem *parent, const QList<Dependency> &needed);
    bool canOpen(const QTreeWidgetItem *item) const;
    void onExpanded(QTreeWidgetItem *item);

    DependencyGraph m_graph;
    QString m_root; ///< short name of the formula
};

} // namespace larkspur::ui
