#include "ui/screens/RecordTableScreen.h"

#include "inventory/state/InventoryState.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/ScreenHeader.h"

#include <QHeaderView>
#include <QVBoxLayout>

namespace larkspur::ui {

RecordTableScreen::RecordTableScreen(const QString &title, const QString &filterHint,
                                     const QStringList &columns, InventoryState &inventory)
    : m_inventory(inventory)
    , m_header(new ScreenHeader(title, filterHint))
    , m_stack(new QStackedWidget)
    , m_view(new QTableView)
    , m_empty(new EmptyState) {
    m_model.setHorizontalHeaderLabels(columns);
    m_view->setModel(&m_model);
    m_view->setAccessibleName(title);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setShowGrid(false);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setTabKeyNavigation(false);
    m_view->setSortingEnabled(true);
    m_view->sortByColumn(0, Qt::AscendingOrder);
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setDefaultSectionSize(34);
    m_view->horizontalHeader()->setHighlightSections(false);
    m_view->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_stack->addWidget(m_view);
    m_stack->addWidget(m_empty);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_header);
    layout->addWidget(m_stack, 1);
    m_reloadTimer.setSingleShot(true);
    m_reloadTimer.setInterval(0);
    connect(&m_reloadTimer, &QTimer::timeout, this, [this] { reload(); });
    connect(&inventory, &InventoryState::changed, this, &RecordTableScreen::reloadSoon);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { onSelectionChanged(); });
    connect(m_header->filter(), &QLineEdit::textChanged, this, &RecordTableScreen::applyFilter);
}

QLineEdit *RecordTableScreen::filterField() const {
    return m_header->filter();
}

void RecordTableScreen::addBanner(QWidget *banner) {
    static_cast<QVBoxLayout *>(layout())->insertWidget(1, banner);
}

void RecordTableScreen::addControl(QWidget *control) {
    m_header->addControl(control);
}

void RecordTableScreen::sortFirstBy(int column, Qt::SortOrder order) {
    m_view->sortByColumn(column, order);
}

QVariant RecordTableScreen::currentData(int role) const {
    const auto selected = m_view->selectionModel()->selectedRows();
    return selected.isEmpty() ? QVariant() : selected.first().data(role);
}

void RecordTableScreen::reloadSoon() {
    if (isVisible())
        m_reloadTimer.start();
}

void RecordTableScreen::showEvent(QShowEvent *event) {
    Screen::showEvent(event);
    reload();
}

void RecordTableScreen::reload() {
    const QString current = m_model.index(m_view->currentIndex().row(), 0).data().toString();
    m_model.removeRows(0, m_model.rowCount());
    const auto records = rows();
    for (const QList<QStandardItem *> &row : records)
        m_model.appendRow(row);
    m_model.sort(m_view->horizontalHeader()->sortIndicatorSection(),
                 m_view->horizontalHeader()->sortIndicatorOrder());
    m_view->resizeColumnsToContents();
    for (int column = 0; column + 1 < m_model.columnCount(); ++column)
        m_view->setColumnWidth(column, std::clamp(m_view->columnWidth(column) + 24, 110, 360));
    m_header->setSubtitle(subtitle());
    applyFilter();
    for (int row = 0; row < m_model.rowCount(); ++row)
        if (!current.isEmpty() && m_model.index(row, 0).data().toString() == current)
            m_view->selectRow(row);
}

void RecordTableScreen::applyFilter() {
    const QString text = m_header->filter()->text().trimmed();
    int shown = 0;
    for (int row = 0; row < m_model.rowCount(); ++row) {
        bool matches = text.isEmpty();
        for (int column = 0; column < m_model.columnCount() && !matches; ++column)
            matches = m_model.index(row, column).data().toString().contains(text, Qt::CaseInsensitive);
        m_view->setRowHidden(row, !matches);
        shown += matches ? 1 : 0;
    }
    if (m_model.rowCount() > 0 && shown == 0)
        m_empty->show(QStringLiteral("search"), tr("Nothing Found"), tr("Nothing matches “%1”.").arg(text));
    else
        showEmptyState(m_empty);
    m_stack->setCurrentWidget(shown == 0 ? static_cast<QWidget *>(m_empty) : m_view);
}

} // namespace larkspur::ui
