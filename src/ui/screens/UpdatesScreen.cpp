#include "ui/screens/UpdatesScreen.h"

#include "inventory/state/InventoryState.h"
#include "operations/OperationCenter.h"
#include "operations/catalogue/UpdateHomebrew.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/PackageTable.h"
#include "ui/widgets/ScreenHeader.h"

#include <QPushButton>

#include <algorithm>

namespace larkspur::ui {

UpdatesScreen::UpdatesScreen(Services services)
    : PackageScreen(tr("Updates"), tr("Filter updates"), services.inventory, services.queries,
                    services.actions)
    , m_services(services)
    , m_check(new QPushButton(icon(QStringLiteral("refresh")), tr("Check Now")))
    , m_upgradeSelected(new QPushButton(tr("Upgrade Selected")))
    , m_upgradeAll(new QPushButton(icon(QStringLiteral("upgrade")), tr("Upgrade All"))) {
    m_check->setToolTip(tr("Fetch Homebrew's newest catalogue and look for updates"));
    m_upgradeAll->setDefault(true);
    table()->model().setMarksUpdates(false);
    for (QPushButton *button : {m_check, m_upgradeSelected, m_upgradeAll}) {
        button->setAccessibleName(button->text());
        header()->addControl(button);
    }
    connect(m_check, &QPushButton::clicked, this, &UpdatesScreen::checkForUpdates);
    connect(m_upgradeSelected, &QPushButton::clicked, this,
            [this] { actions().upgrade(table()->selectedRows(), this); });
    connect(m_upgradeAll, &QPushButton::clicked, this,
            [this] { actions().upgradeAll(inventory().value(), this); });
    connect(filterField(), &QLineEdit::textChanged, this, [this](const QString &text) {
        table()->setFilter(text.trimmed());
        showEmptyState();
    });
    connect(table()->emptyState(), &EmptyState::actionRequested, this, &UpdatesScreen::checkForUpdates);
    connect(table(), &PackageTable::currentChanged, this, &UpdatesScreen::updateButtons);
    connect(&services.actions.operations, &OperationCenter::started, this, &UpdatesScreen::updateButtons);
    connect(&services.actions.operations, &OperationCenter::finished, this, &UpdatesScreen::updateButtons);
}

QList<PackageRow> UpdatesScreen::upgradable() const {
    QList<PackageRow> free = rows(PackageSelection::Outdated);
    free.removeIf([](const PackageRow &row) { return row.pinned; });
    return free;
}

void UpdatesScreen::reload() {
    table()->setRows(rows(PackageSelection::Outdated));
    const auto count = table()->model().totalRows();
    const auto pinned = count - upgradable().size();
    QString text =
        count == 1 ? tr("1 package can be upgraded") : tr("%1 packages can be upgraded").arg(count);
    if (pinned > 0)
        text += tr(" · %1 pinned").arg(pinned);
    if (const auto snoozed = rows(PackageSelection::Snoozed).size(); snoozed > 0)
        text += tr(" · %1 snoozed").arg(snoozed);
    if (m_isChecking)
        text = tr("Fetching Homebrew's newest catalogue…");
    else if (!m_problem.isEmpty())
        text = m_problem.section(QLatin1Char('\n'), 0, 0);
    header()->setSubtitle(text + (m_isChecking ? QString() : freshness()));
    showEmptyState();
    updateButtons();
}

void UpdatesScreen::updateButtons() {
    const bool isBusy = !m_services.actions.operations.unfinished().isEmpty();
    const auto selected = table()->selectedRows();
    m_check->setEnabled(!m_isChecking);
    m_upgradeAll->setEnabled(!isBusy && !upgradable().isEmpty());
    m_upgradeSelected->setEnabled(!isBusy && !selected.isEmpty());
    m_upgradeSelected->setText(selected.size() > 1 ? tr("Upgrade %1 Selected").arg(selected.size())
                                                   : tr("Upgrade Selected"));
}

void UpdatesScreen::checkForUpdates() {
    if (m_isChecking)
        return;
    m_isChecking = true;
    m_problem.clear();
    reload();
    OperationRun *run = m_services.actions.operations.create(updateHomebrew());
    connect(run, &OperationRun::finished, this, [this, run] { endCheck(*run); });
    m_services.actions.operations.start(run);
}

void UpdatesScreen::endCheck(const OperationRun &run) {
    m_isChecking = false;
    if (run.outcome() == OperationOutcome::Failed && !run.wasStopped())
        m_problem = tr("The check failed: %1").arg(run.failureSummary().text);
    reload();
}

void UpdatesScreen::showEmptyState() {
    EmptyState *empty = table()->emptyState();
    const Inventory &value = inventory().value();
    const bool isWaiting = value.isLoading || value.isRefreshing || value.refreshErrors.isEmpty();
    if (!value.hasLoaded && isWaiting)
        empty->show(QStringLiteral("updates"), tr("Looking for Updates…"), tr("Homebrew is being asked."));
    else if (!filterField()->text().isEmpty())
        empty->show(QStringLiteral("search"), tr("Nothing Found"),
                    tr("No update matches “%1”.").arg(filterField()->text()));
    else if (!value.refreshErrors.isEmpty()) // an empty list proves nothing then
        empty->show(QStringLiteral("warning"), tr("The List Could Not Be Read"),
                    value.refreshErrors.first().error.message(), tr("Check Now"));
    else
        empty->show(QStringLiteral("done"), tr("Everything Is Up to Date"),
                    tr("Homebrew's catalogue of this machine names no newer version."), tr("Check Now"));
}

} // namespace larkspur::ui
