#include "ui/screens/PackageScreen.h"

#include "inventory/state/InventoryState.h"
#include "ui/details/PackageDetails.h"
#include "ui/theme/Colours.h"
#include "ui/widgets/PackageTable.h"
#include "ui/widgets/ScreenHeader.h"
#include "userdata/UserDataManager.h"

#include <QSplitter>
#include <QVBoxLayout>

namespace larkspur::ui {

PackageScreen::PackageScreen(const QString &title, const QString &filterHint, InventoryState &inventory,
                             InventoryQueries &queries, PackageActions::Services actions)
    : m_inventory(inventory)
    , m_actions(actions)
    , m_header(new ScreenHeader(title, filterHint))
    , m_table(new PackageTable(m_actions, title))
    , m_details(new PackageDetails(inventory, queries, actions.tasks, m_actions)) {
    auto *list = new QWidget;
    auto *listLayout = new QVBoxLayout(list);
    listLayout->setContentsMargins(0, 0, 0, 0);
    listLayout->setSpacing(0);
    listLayout->addWidget(m_header);
    listLayout->addWidget(m_table, 1);
    auto *splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(list);
    splitter->addWidget(m_details);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(1);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setSizes({560, 360});
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);

    m_reloadTimer.setSingleShot(true);
    m_reloadTimer.setInterval(0);
    connect(&m_reloadTimer, &QTimer::timeout, this, [this] { reload(); });
    connect(&inventory, &InventoryState::changed, this, &PackageScreen::reloadSoon);
    connect(&m_actions.userData(), &UserDataManager::snoozedPackagesChanged, this,
            &PackageScreen::reloadSoon);
    connect(m_table, &PackageTable::currentChanged, this, [this] {
        const auto selected = m_table->selectedRows();
        m_details->show(selected.isEmpty() ? std::nullopt : m_table->currentRow());
    });
    connect(m_details, &PackageDetails::packageRequested, this, [this](const PackageId &id) {
        if (!showPackage(id))
            Q_EMIT packageRequested(id);
    });
}

QLineEdit *PackageScreen::filterField() const {
    return m_header->filter();
}

bool PackageScreen::showPackage(const PackageId &id) {
    if (m_table->model().indexOf(id) < 0 && !m_header->filter()->text().isEmpty())
        m_header->filter()->clear();
    if (m_table->model().indexOf(id) < 0)
        return false;
    m_table->select(id);
    return true;
}

void PackageScreen::showEvent(QShowEvent *event) {
    Screen::showEvent(event);
    reload();
}

void PackageScreen::reloadSoon() {
    if (isVisible())
        m_reloadTimer.start();
}

QList<PackageRow> PackageScreen::rows(PackageSelection selection) const {
    return packageRows(m_inventory.value(), m_actions.userData(), selection);
}

QString PackageScreen::freshness() const {
    const Inventory &inventory = m_inventory.value();
    if (inventory.isLoading)
        return tr(" · loading…");
    if (inventory.isRefreshing)
        return inventory.isStale ? tr(" · from an earlier time, refreshing…") : tr(" · refreshing…");
    return inventory.isStale ? tr(" · from an earlier time") : QString();
}

} // namespace larkspur::ui
