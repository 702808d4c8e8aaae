#include "ui/widgets/PackageActions.h"

#include "core/settings/Preferences.h"
#include "operations/OperationCenter.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/RollBackKegs.h"
#include "operations/packages/InstallPackages.h"
#include "operations/packages/PinPackages.h"
#include "operations/packages/UninstallPackages.h"
#include "operations/packages/UpgradeAll.h"
#include "operations/packages/UpgradePackages.h"
#include "ui/operation/PlanSheet.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/PlainText.h"
#include "userdata/UserDataManager.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>

namespace larkspur::ui {

namespace {

template <typename Fits>
QList<PackageRow> those(const QList<PackageRow> &rows, Fits fits) {
    QList<PackageRow> kept;
    std::ranges::copy_if(rows, std::back_inserter(kept), fits);
    return kept;
}

QList<PackageTarget> targets(const QList<PackageRow> &rows) {
    QList<PackageTarget> packages;
    std::ranges::transform(rows, std::back_inserter(packages), &PackageRow::target);
    return packages;
}

QString counted(const QString &verb, const QList<PackageRow> &rows) {
    return rows.size() == 1 ? QStringLiteral("%1 %2").arg(verb, inCaption(rows.first().title))
                            : QStringLiteral("%1 %2 Packages").arg(verb).arg(rows.size());
}

void refuseUpgradeOfAll(const QString &damage, QWidget *window) {
    auto *alert =
        new QMessageBox(QMessageBox::Warning, PackageActions::tr("Upgrade All"),
                        PackageActions::tr("The list of snoozed packages is damaged, so not all can be "
                                           "upgraded. Select the packages to upgrade instead."),
                        QMessageBox::Ok, window->window());
    alert->setInformativeText(damage);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->open();
}

} // namespace

PackageActions::PackageActions(Services services, QObject *parent)
    : QObject(parent)
    , m_services(services) {}

void PackageActions::startAfterPlan(const OperationPtr &operation, QWidget *window) {
    const auto question = operation->question();
    if (!question || (!question->isMust && !m_services.preferences.boolean(keys::showOperationPlan, true))) {
        m_services.operations.start(operation);
        return;
    }
    auto *sheet = new PlanSheet({m_services.preferences, m_services.tasks}, operation, window->window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::accepted, this, [this, operation] { m_services.operations.start(operation); });
    sheet->open();
}

void PackageActions::install(const QList<PackageRow> &rows) {
    if (!rows.isEmpty())
        m_services.operations.start(installPackages(m_services.packages, targets(rows)));
}

void PackageActions::upgrade(const QList<PackageRow> &rows, QWidget *window) {
    if (!rows.isEmpty())
        startAfterPlan(upgradePackages(m_services.packages, targets(rows)), window);
}

void PackageActions::upgradeAll(const Inventory &inventory, QWidget *window) {
    if (const QString damage = m_services.userData.snoozedDamage(); !damage.isEmpty()) {
        refuseUpgradeOfAll(damage, window);
        return;
    }
    const auto rows = [&](PackageSelection selection) {
        return packageRows(inventory, m_services.userData, selection);
    };
    startAfterPlan(upgradeOfAll(m_services.packages, targets(rows(PackageSelection::Outdated)),
                                !rows(PackageSelection::Snoozed).isEmpty()),
                   window);
}

void PackageActions::snooze(const QList<PackageRow> &rows, const SnoozeType &type) {
    for (const PackageRow &row : rows)
        m_services.userData.snoozePackage(row.id.name, row.newVersion, row.id.isCask, type);
}

void PackageActions::unsnooze(const QList<PackageRow> &rows) {
    for (const PackageRow &row : rows)
        m_services.userData.unsnoozePackage(row.id.name);
}

void PackageActions::reinstall(const QList<PackageRow> &rows) {
    if (!rows.isEmpty())
        m_services.operations.start(reinstallPackages(m_services.packages, targets(rows)));
}

void PackageActions::setPinned(const QList<PackageRow> &rows, bool pinned) {
    if (!rows.isEmpty())
        m_services.operations.start(pinned ? pinPackages(m_services.packages, targets(rows))
                                           : unpinPackages(m_services.packages, targets(rows)));
}

QStringList PackageActions::rollbackVersions(const PackageRow &row) const {
    QStringList versions;
    if (!row.id.isCask && m_services.kegs.isLocationAvailable())
        for (const KegEntry &entry : m_services.kegs.entriesFor(row.id.name))
            if (entry.version != row.version)
                versions.prepend(entry.version);
    return versions;
}

void PackageActions::rollBack(const PackageRow &row, const QString &version, QWidget *window) {
    auto *question = new QMessageBox(QMessageBox::Question, tr("Roll Back"),
                                     tr("Roll %1 back to %2?").arg(row.title, version), QMessageBox::Cancel,
                                     window->window());
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setInformativeText(
        tr("Restores the exact files Larkspur saved before the upgrade — no rebuild, no download. The next "
           "upgrade undoes this, unless you pin %1 or skip the version.")
            .arg(row.title));
    const QAbstractButton *yes = question->addButton(tr("Roll Back"), QMessageBox::AcceptRole);
    PackageTarget formula = row.target();
    formula.latestVersion = version;
    connect(question, &QMessageBox::buttonClicked, this,
            [this, question, yes, formula](QAbstractButton *clicked) {
                if (clicked == yes)
                    m_services.operations.start(rollBackKegs(m_services.packages, {formula}));
                question->close();
            });
    question->open();
}

void PackageActions::uninstall(const QList<PackageRow> &rows, QWidget *window) {
    if (!rows.isEmpty())
        startAfterPlan(uninstallPackages(m_services.packages, targets(rows)), window);
}

void PackageActions::addUpdateActions(QMenu *menu, const QList<PackageRow> &outdated, QWidget *window) {
    menu->addAction(icon(QStringLiteral("upgrade")), counted(tr("Upgrade"), outdated), this,
                    [this, outdated, window] { upgrade(outdated, window); });
    const auto snoozed = those(outdated, [](const PackageRow &row) { return !row.snooze.isEmpty(); });
    if (!snoozed.isEmpty())
        menu->addAction(icon(QStringLiteral("snoozed")), counted(tr("Unsnooze"), snoozed), this,
                        [this, snoozed] { unsnooze(snoozed); });
    const auto shown = those(outdated, [](const PackageRow &row) { return row.snooze.isEmpty(); });
    if (shown.isEmpty())
        return;
    QMenu *choices = menu->addMenu(icon(QStringLiteral("snoozed")), counted(tr("Snooze"), shown));
    const auto offer = [&](const QString &text, const SnoozeType &type) {
        choices->addAction(text, this, [this, shown, type] { snooze(shown, type); });
    };
    offer(tr("For a Day"), SnoozeDuration::OneDay);
    offer(tr("For a Week"), SnoozeDuration::OneWeek);
    offer(tr("For a Month"), SnoozeDuration::OneMonth);
    offer(tr("Until the Next Version"), UntilNextVersion());
}

void PackageActions::fillMenu(QMenu *menu, const QList<PackageRow> &rows, QWidget *window) {
    const auto outdated = those(rows, [](const PackageRow &row) { return !row.newVersion.isEmpty(); });
    const auto available = those(rows, [](const PackageRow &row) { return !row.installed; });
    const auto installed = those(rows, [](const PackageRow &row) { return row.installed; });
    if (!outdated.isEmpty())
        addUpdateActions(menu, outdated, window);
    if (!available.isEmpty())
        menu->addAction(icon(QStringLiteral("install")), counted(tr("Install"), available), this,
                        [this, available] { install(available); });
    if (!installed.isEmpty()) {
        const auto pinned = those(installed, [](const PackageRow &row) { return row.pinned; });
        const auto free = those(installed, [](const PackageRow &row) { return !row.pinned; });
        menu->addAction(icon(QStringLiteral("refresh")), counted(tr("Reinstall"), installed), this,
                        [this, installed] { reinstall(installed); });
        if (rows.size() == 1)
            for (const QString &version : rollbackVersions(rows.first()))
                menu->addAction(
                    icon(QStringLiteral("timemachine")), tr("Roll Back to %1…").arg(inCaption(version)), this,
                    [this, row = rows.first(), version, window] { rollBack(row, version, window); });
        if (!free.isEmpty())
            menu->addAction(icon(QStringLiteral("pinned")), counted(tr("Pin"), free), this,
                            [this, free] { setPinned(free, true); });
        if (!pinned.isEmpty())
            menu->addAction(icon(QStringLiteral("pinned")), counted(tr("Unpin"), pinned), this,
                            [this, pinned] { setPinned(pinned, false); });
        menu->addAction(icon(QStringLiteral("uninstall")),
                        counted(tr("Uninstall"), installed) + QStringLiteral("…"), this,
                        [this, installed, window] { uninstall(installed, window); });
    }
    menu->addSeparator();
    QStringList names;
    for (const PackageRow &row : rows)
        names.append(row.fullName);
    menu->addAction(rows.size() == 1 ? tr("Copy Name") : tr("Copy Names"), this,
                    [names] { QApplication::clipboard()->setText(names.join(QLatin1Char('\n'))); });
}

} // namespace larkspur::ui
