#include "ui/details/DependencyTree.h"

#include <QHeaderView>

#include <algorithm>

namespace larkspur::ui {

namespace {

void fill(QTreeWidgetItem *parent, const DependencyNode &node) {
    for (const DependencyNode &child : node.children) {
        auto *item = new QTreeWidgetItem(parent, {child.id});
        item->setData(0, Qt::UserRole, child.name);
        fill(item, child);
    }
}

int openRows(const QTreeWidgetItem *item) {
    int rows = 0;
    for (int i = 0; i < item->childCount(); ++i)
        rows += 1 + (item->child(i)->isExpanded() ? openRows(item->child(i)) : 0);
    return rows;
}

} // namespace

DependencyTree::DependencyTree(const DependencyNode &root, QWidget *parent)
    : QTreeWidget(parent) {
    setHeaderHidden(true);
    setFrameShape(QFrame::NoFrame);
    setIndentation(16);
    setAccessibleName(tr("Dependencies"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    fill(invisibleRootItem(), root);
    const auto resized = [this] { updateGeometry(); };
    connect(this, &QTreeWidget::itemExpanded, this, resized);
    connect(this, &QTreeWidget::itemCollapsed, this, resized);
    connect(this, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem *item) {
        Q_EMIT packageRequested(item->data(0, Qt::UserRole).toString());
    });
}

QSize DependencyTree::sizeHint() const {
    constexpr int mostRows = 14;
    const int rows = std::min(mostRows, openRows(invisibleRootItem()));
    const int height = topLevelItemCount() == 0 ? 0 : sizeHintForRow(0);
    return {200, rows * height + 4};
}

} // namespace larkspur::ui
