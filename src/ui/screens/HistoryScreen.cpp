#include "ui/screens/HistoryScreen.h"

#include "core/brew/PackageName.h"
#include "inventory/state/InventoryState.h"
#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/PlainText.h"
#include "userdata/UserDataManager.h"

#include <QPushButton>

#include <algorithm>

namespace larkspur::ui {

namespace {

constexpr int idRole = Qt::UserRole; ///< of the first column: the package

QString actionWord(HistoryAction action) {
    switch (action) {
    case HistoryAction::Install:
        return HistoryScreen::tr("Installed");
    case HistoryAction::Uninstall:
        return HistoryScreen::tr("Uninstalled");
    case HistoryAction::Upgrade:
        return HistoryScreen::tr("Upgraded");
    case HistoryAction::Update:
        return HistoryScreen::tr("Updated");
    }
    return {};
}

QList<QStandardItem *> cells(const HistoryEntry &entry, const QPalette &palette) {
    auto *when = new QStandardItem;
    when->setData(entry.timestamp.toLocalTime(), Qt::DisplayRole);
    when->setData(QVariant::fromValue(PackageId{shortName(entry.packageName), entry.isCask}), idRole);
    auto *result = new QStandardItem(entry.success ? HistoryScreen::tr("Done") : HistoryScreen::tr("Failed"));
    result->setForeground(toneColour(entry.success ? Tone::Good : Tone::Bad, palette));
    return {when, new QStandardItem(entry.packageName), new QStandardItem(actionWord(entry.action)), result};
}

} // namespace

HistoryScreen::HistoryScreen(InventoryState &inventory, PackageActions::Services actions)
    : RecordTableScreen(tr("History"), tr("Filter history"),
                        {tr("When"), tr("Package"), tr("What"), tr("Result")}, inventory)
    , m_actions(actions)
    , m_rollBack(new QPushButton(icon(QStringLiteral("timemachine")), QString())) {
    m_rollBack->hide();
    addControl(m_rollBack);
    sortFirstBy(0, Qt::DescendingOrder);
    connect(&actions.userData, &UserDataManager::historyChanged, this, &HistoryScreen::reloadSoon);
    connect(m_rollBack, &QPushButton::clicked, this, [this] {
        const auto package = selectedPackage();
        if (const QStringList versions = package ? m_actions.rollbackVersions(*package) : QStringList();
            !versions.isEmpty())
            m_actions.rollBack(*package, versions.first(), this);
    });
}

void HistoryScreen::reload() {
    RecordTableScreen::reload();
    onSelectionChanged();
}

void HistoryScreen::onSelectionChanged() {
    const auto package = selectedPackage();
    const QStringList versions = package ? m_actions.rollbackVersions(*package) : QStringList();
    m_rollBack->setVisible(!versions.isEmpty());
    if (!versions.isEmpty())
        m_rollBack->setText(
            tr("Roll %1 Back to %2…").arg(inCaption(package->title), inCaption(versions.first())));
}

std::optional<PackageRow> HistoryScreen::selectedPackage() const {
    const auto id = currentData(idRole).value<PackageId>();
    for (const PackageRow &row :
         packageRows(inventory().value(), m_actions.userData(), PackageSelection::Everything))
        if (row.id == id)
            return row;
    return std::nullopt;
}

QList<QList<QStandardItem *>> HistoryScreen::rows() const {
    QList<QList<QStandardItem *>> rows;
    for (const HistoryEntry &entry : m_actions.userData().history())
        rows.append(cells(entry, palette()));
    return rows;
}

QString HistoryScreen::subtitle() const {
    const auto &history = m_actions.userData().history();
    const auto failed = std::ranges::count(history, false, &HistoryEntry::success);
    const QString text = history.size() == 1 ? tr("1 entry") : tr("%1 entries").arg(history.size());
    return failed > 0 ? text + tr(" · %1 failed").arg(failed) : text;
}

void HistoryScreen::showEmptyState(EmptyState *empty) const {
    empty->show(QStringLiteral("history"), tr("Nothing Has Happened Yet"),
                tr("Installations, upgrades and removals made here appear in this list."));
}

} // namespace larkspur::ui
