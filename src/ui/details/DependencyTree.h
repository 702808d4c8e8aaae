#pragma once

#include "inventory/state/DependencyGraph.h"

#include <QTreeWidget>

namespace larkspur::ui {

/// What a formula needs, as a tree as tall as its open rows.
class DependencyTree : public QTreeWidget {
    Q_OBJECT
  public:
    explicit DependencyTree(const DependencyNode &root, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

  Q_SIGNALS:
    void packageRequested(const QString &name);
};

} // namespace larkspur::ui
