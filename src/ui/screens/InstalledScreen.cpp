#include "ui/screens/InstalledScreen.h"

#include "core/async/TaskScope.h"
#include "core/settings/Preferences.h"
#include "inventory/refresh/PackageSizes.h"
#include "inventory/state/InventoryState.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/PackageTable.h"
#include "ui/widgets/ScreenHeader.h"

#include <QComboBox>

namespace larkspur::ui {

namespace {

QString titleOf(InstalledKind kind) {
    switch (kind) {
    case InstalledKind::Formulae:
        return QObject::tr("Formulae");
    case InstalledKind::Casks:
        return QObject::tr("Casks");
    case InstalledKind::Pinned:
        return QObject::tr("Pinned");
    case InstalledKind::Snoozed:
        return QObject::tr("Snoozed");
    }
    return {};
}

QString countText(InstalledKind kind, qsizetype count) {
    switch (kind) {
    case InstalledKind::Pinned:
        return QObject::tr("%1 pinned").arg(count);
    case InstalledKind::Snoozed:
        return QObject::tr("%1 snoozed").arg(count);
    case InstalledKind::Formulae:
    case InstalledKind::Casks:
        break;
    }
    return QObject::tr("%1 installed").arg(count);
}

PackageSelection selectionOf(InstalledKind kind) {
    switch (kind) {
    case InstalledKind::Formulae:
        return PackageSelection::Formulae;
    case InstalledKind::Casks:
        return PackageSelection::Casks;
    case InstalledKind::Pinned:
        return PackageSelection::Pinned;
    case InstalledKind::Snoozed:
        return PackageSelection::Snoozed;
    }
    return PackageSelection::Everything;
}

const QStringList &orderNames() {
    static const QStringList names{QStringLiteral("name"), QStringLiteral("installDate"),
                                   QStringLiteral("size")};
    return names;
}

} // namespace

InstalledScreen::InstalledScreen(InstalledKind kind, Services services)
    : PackageScreen(titleOf(kind), tr("Filter by name or description"), services.inventory, services.queries,
                    services.actions)
    , m_kind(kind)
    , m_services(services)
    , m_order(new QComboBox) {
    m_order->addItems({tr("By name"), tr("By install date"), tr("By size")});
    m_order->setAccessibleName(tr("Sort order"));
    header()->addControl(m_order);
    table()->model().setMarksUpdates(kind != InstalledKind::Snoozed);
    const auto stored = orderNames().indexOf(services.actions.preferences.string(keys::packageSortOrder));
    m_order->setCurrentIndex(static_cast<int>(std::max<qsizetype>(0, stored)));
    connect(m_order, &QComboBox::activated, this, [this](int index) {
        m_services.actions.preferences.set(keys::packageSortOrder, orderNames()[index]);
        applyOrder();
    });
    connect(filterField(), &QLineEdit::textChanged, this, [this](const QString &text) {
        table()->setFilter(text.trimmed());
        showEmptyState();
    });
    applyOrder();
}

void InstalledScreen::applyOrder() {
    const auto order = static_cast<PackageSortOrder>(m_order->currentIndex());
    table()->setOrder(order);
    if (order == PackageSortOrder::Size && isVisible())
        reload();
}

void InstalledScreen::reload() {
    const Inventory &value = inventory().value();
    const bool wantsSizes = m_order->currentIndex() == static_cast<int>(PackageSortOrder::Size);
    if (wantsSizes && value.hasLoaded && !value.hasLoadedPackageSizes && !value.isLoadingPackageSizes)
        m_services.actions.tasks.spawn(QStringLiteral("Measuring sizes"), m_services.sizes.measure());
    QList<PackageRow> shown = rows(selectionOf(m_kind));
    if (m_kind == InstalledKind::Snoozed)
        for (PackageRow &row : shown)
            row.description = row.snooze; // the line that matters here
    table()->setRows(std::move(shown));
    const auto count = table()->model().totalRows();
    header()->setSubtitle(
        (wantsSizes && value.isLoadingPackageSizes ? tr("Calculating sizes…") : countText(m_kind, count)) +
        freshness());
    showEmptyState();
}

void InstalledScreen::showEmptyState() {
    EmptyState *empty = table()->emptyState();
    const Inventory &value = inventory().value();
    const bool isWaiting = value.isLoading || value.isRefreshing || value.refreshErrors.isEmpty();
    if (!value.hasLoaded && isWaiting)
        empty->show(QStringLiteral("package"), tr("Reading the Installed Packages…"),
                    tr("Homebrew takes a few seconds for the first list."));
    else if (!filterField()->text().isEmpty())
        empty->show(QStringLiteral("search"), tr("Nothing Found"),
                    tr("No installed package matches “%1”.").arg(filterField()->text()));
    else if (!value.refreshErrors.isEmpty()) // an empty list proves nothing then
        empty->show(QStringLiteral("warning"), tr("The List Could Not Be Read"),
                    value.refreshErrors.first().error.message());
    else if (m_kind == InstalledKind::Pinned)
        empty->show(QStringLiteral("pinned"), tr("Nothing Is Pinned"),
                    tr("A pinned package keeps its version when everything else is upgraded."));
    else if (m_kind == InstalledKind::Snoozed)
        empty->show(QStringLiteral("snoozed"), tr("Nothing Is Snoozed"),
                    tr("A snoozed update is not shown for a while, or until a newer version comes."));
    else
        empty->show(QStringLiteral("package"), tr("Nothing Installed Yet"),
                    tr("Find something to install with Search."));
}

} // namespace larkspur::ui
