#include "ui/details/DependencyTree.h"

#include <QHeaderView>
#include <QKeyEvent>

#include <algorithm>

namespace larkspur::ui {

namespace {

QString nameOf(const QTreeWidgetItem *item) {
    return item->data(0, Qt::UserRole).toString();
}

int openRows(const QTreeWidgetItem *item) {
    int rows = 0;
    for (int i = 0; i < item->childCount(); ++i)
        rows += 1 + (item->child(i)->isExpanded() ? openRows(item->child(i)) : 0);
    return rows;
}

} // namespace

DependencyTree::DependencyTree(DependencyGraph graph, const Formula &formula, QWidget *parent)
    : QTreeWidget(parent)
    , m_graph(std::move(graph))
    , m_root(formula.name) {
    setHeaderHidden(true);
    setFrameShape(QFrame::NoFrame);
    setIndentation(16);
    setAccessibleName(tr("Dependencies"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    viewport()->setAutoFillBackground(false);
    addRows(invisibleRootItem(), dependenciesNamed(formula.dependencies));
    connect(this, &QTreeWidget::itemExpanded, this, &DependencyTree::onExpanded);
    connect(this, &QTreeWidget::itemCollapsed, this, [this] { updateGeometry(); });
    connect(this, &QTreeWidget::itemActivated, this,
            [this](QTreeWidgetItem *item) { Q_EMIT packageRequested(nameOf(item)); });
}

void DependencyTree::addRows(QTreeWidgetItem *parent, const QList<Dependency> &needed) {
    for (const Dependency &dependency : needed) {
        auto *item = new QTreeWidgetItem(parent, {dependency.id});
        item->setData(0, Qt::UserRole, dependency.name);
        if (canOpen(item))
            item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    }
}

/// Not where there is nothing below, nor where a circle closes.
bool DependencyTree::canOpen(const QTreeWidgetItem *item) const {
    const QString name = nameOf(item);
    for (const QTreeWidgetItem *above = item->parent(); above; above = above->parent())
        if (nameOf(above) == name)
            return false;
    return name != m_root && !m_graph.needs(name).isEmpty();
}

void DependencyTree::onExpanded(QTreeWidgetItem *item) {
    if (item->childCount() == 0)
        addRows(item, m_graph.needs(nameOf(item)));
    updateGeometry();
}

void DependencyTree::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Asterisk && currentItem())
        expandItem(currentItem()); // not, as elsewhere, everything below it
    else
        QTreeWidget::keyPressEvent(event);
}

QSize DependencyTree::sizeHint() const {
    constexpr int mostRows = 14;
    const int rows = std::min(mostRows, openRows(invisibleRootItem()));
    const int height = topLevelItemCount() == 0 ? 0 : sizeHintForRow(0);
    return {200, rows * height + 4};
}

} // namespace larkspur::ui
