#include "ui/widgets/PackageTable.h"

#include "ui/models/PackageDelegate.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/PackageActions.h"

#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>

namespace larkspur::ui {

PackageTable::PackageTable(PackageActions &actions, const QString &accessibleName, QWidget *parent)
    : QStackedWidget(parent)
    , m_actions(actions)
    , m_view(new QTableView(this))
    , m_empty(new EmptyState(this)) {
    m_view->setAccessibleName(accessibleName);
    m_view->setModel(&m_model);
    m_view->setItemDelegate(new PackageDelegate(m_view));
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setShowGrid(false);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setWordWrap(false);
    m_view->setTabKeyNavigation(false);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setDefaultSectionSize(46);
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_view->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    QHeaderView *header = m_view->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setSectionResizeMode(PackageTableModel::NameColumn, QHeaderView::Stretch);
    header->resizeSection(PackageTableModel::VersionColumn, 150);
    header->resizeSection(PackageTableModel::SizeColumn, 100);
    header->resizeSection(PackageTableModel::DateColumn, 96);
    m_view->setColumnHidden(PackageTableModel::SizeColumn, true); // until sizes are measured
    connect(header, &QHeaderView::sectionClicked, this, [this, header](int section) {
        const bool again = header->sortIndicatorSection() == section &&
                           header->sortIndicatorOrder() == Qt::AscendingOrder &&
                           header->isSortIndicatorShown();
        const Qt::SortOrder order = again ? Qt::DescendingOrder : Qt::AscendingOrder;
        header->setSortIndicatorShown(true);
        header->setSortIndicator(section, order);
        keepingPlace([&] { m_model.sort(section, order); });
    });
    header->setSectionsClickable(true);
    connect(m_view, &QTableView::customContextMenuRequested, this, &PackageTable::showMenu);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &PackageTable::currentChanged);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PackageTable::currentChanged);
    addWidget(m_view);
    addWidget(m_empty);
}

template <typename Change>
void PackageTable::keepingPlace(Change change) {
    QList<PackageId> selected;
    for (const PackageRow &row : selectedRows())
        selected.append(row.id);
    const auto current = currentRow();
    const int scrolled = m_view->verticalScrollBar()->value();
    {
        const QSignalBlocker quiet(m_view->selectionModel());
        change();
        QItemSelection selection;
        for (const PackageId &id : selected)
            if (const int row = m_model.indexOf(id); row >= 0)
                selection.select(m_model.index(row, 0),
                                 m_model.index(row, PackageTableModel::ColumnCount - 1));
        m_view->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
        if (const int row = current ? m_model.indexOf(current->id) : -1; row >= 0)
            m_view->selectionModel()->setCurrentIndex(m_model.index(row, 0), QItemSelectionModel::NoUpdate);
    }
    m_view->verticalScrollBar()->setValue(scrolled);
    m_view->viewport()->update();
    setCurrentWidget(m_model.rowCount() == 0 ? static_cast<QWidget *>(m_empty) : m_view);
    Q_EMIT rowsChanged();
    Q_EMIT currentChanged();
}

void PackageTable::setRows(QList<PackageRow> rows) {
    if (rows == m_model.allRows() && !rows.isEmpty())
        return; // a refresh that changed nothing here disturbs nobody
    keepingPlace([&] { m_model.setRows(std::move(rows)); });
    m_view->setColumnHidden(PackageTableModel::SizeColumn, m_model.largestSize() == 0);
}

void PackageTable::setFilter(const QString &text) {
    keepingPlace([&] { m_model.setFilter(text); });
}

void PackageTable::setOrder(PackageSortOrder order) {
    m_view->horizontalHeader()->setSortIndicatorShown(false);
    keepingPlace([&] { m_model.setOrder(order); });
}

QList<PackageRow> PackageTable::selectedRows() const {
    QList<PackageRow> rows;
    const auto indexes = m_view->selectionModel()->selectedRows();
    for (const QModelIndex &index : indexes)
        rows.append(m_model.row(index.row()));
    return rows;
}

std::optional<PackageRow> PackageTable::currentRow() const {
    const QModelIndex index = m_view->currentIndex();
    return index.isValid() && index.row() < m_model.rowCount() ? std::optional(m_model.row(index.row()))
                                                               : std::nullopt;
}

void PackageTable::select(const PackageId &id) {
    if (const int row = m_model.indexOf(id); row >= 0) {
        m_view->selectRow(row);
        m_view->scrollTo(m_model.index(row, 0));
    }
}

void PackageTable::showMenu(QPoint position) {
    const QList<PackageRow> rows = selectedRows();
    if (rows.isEmpty())
        return;
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    m_actions.fillMenu(menu, rows, window());
    menu->popup(m_view->viewport()->mapToGlobal(position));
}

} // namespace larkspur::ui
