#include "ui/operation/FollowUpBar.h"

#include "core/brew/PackageName.h"
#include "inventory/state/InventoryState.h"
#include "operations/OperationCenter.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/RollBackKegs.h"
#include "operations/packages/PinPackages.h"
#include "operations/services/RestartServices.h"
#include "ui/operation/RunInTerminal.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/PlainText.h"
#include "userdata/UserDataManager.h"

#include <QHBoxLayout>
#include <QPushButton>

#include <algorithm>

namespace larkspur::ui {

FollowUpBar::FollowUpBar(Services services, QWidget *parent)
    : QWidget(parent)
    , m_services(services)
    , m_restart(new QPushButton(icon(QStringLiteral("services")), QString()))
    , m_skip(new QPushButton(icon(QStringLiteral("snoozed")), QString()))
    , m_pin(new QPushButton(icon(QStringLiteral("pinned")), QString()))
    , m_rollBack(new QPushButton(icon(QStringLiteral("timemachine")), tr("Roll Back")))
    , m_terminal(new QPushButton(icon(QStringLiteral("output")), tr("Run in Terminal"))) {
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    for (QPushButton *button : {m_restart, m_skip, m_pin, m_rollBack, m_terminal})
        row->addWidget(button);
    m_skip->setToolTip(tr("Its update is not shown until a newer version comes."));
    m_pin->setToolTip(
        tr("A pinned formula keeps its version; otherwise the next upgrade undoes the rollback."));
    connect(m_restart, &QPushButton::clicked, this, [this] {
        m_services.operations.start(restartServices(m_services.packages, m_run->report().servicesToRestart));
    });
    connect(m_skip, &QPushButton::clicked, this, &FollowUpBar::skip);
    connect(m_pin, &QPushButton::clicked, this,
            [this] { m_services.operations.start(pinPackages(m_services.packages, rolledBack())); });
    connect(m_rollBack, &QPushButton::clicked, this,
            [this] { m_services.operations.start(rollBackKegs(m_services.packages, rollbackTargets())); });
    connect(m_terminal, &QPushButton::clicked, this,
            [this] { runInTerminal(commandForTerminal(), window()); });
    connect(&services.inventory, &InventoryState::changed, this, &FollowUpBar::offer);
    follow(nullptr);
}

void FollowUpBar::follow(const OperationRun *run) {
    if (run != m_run)
        m_hasSkipped = false;
    m_run = run;
    offer();
}

QList<PackageTarget> FollowUpBar::rolledBack() const {
    QList<PackageTarget> packages;
    for (const PackageResult &result : m_run->report().packages)
        if (result.deed == Deed::RolledBack && result.isDone())
            packages.append(result.package);
    return packages;
}

void FollowUpBar::offer() {
    if (!m_run) {
        for (QPushButton *button : {m_restart, m_skip, m_pin, m_rollBack, m_terminal})
            button->hide();
        return;
    }
    const QStringList services = m_run->report().servicesToRestart;
    const QList<PackageTarget> packages = rolledBack();
    const bool hasFailed = m_run->outcome() == OperationOutcome::Failed;
    m_restart->setVisible(!services.isEmpty());
    m_restart->setText(services.size() == 1 ? tr("Restart %1").arg(inCaption(services.first()))
                                            : tr("Restart %1 Services").arg(services.size()));
    m_pin->setVisible(!packages.isEmpty());
    m_pin->setText(packages.size() == 1 ? tr("Pin %1").arg(inCaption(packages.first().name))
                                        : tr("Pin Them"));
    m_skip->setVisible(!m_hasSkipped && std::ranges::any_of(packages, [this](const auto &package) {
        return !versionToSkip(package).isEmpty();
    }));
    m_skip->setText(packages.size() == 1 ? tr("Skip %1").arg(inCaption(versionToSkip(packages.first())))
                                         : tr("Skip Versions"));
    m_rollBack->setVisible(hasFailed && !rollbackTargets().isEmpty());
    m_terminal->setVisible(hasFailed && !m_run->wasStopped() && !commandForTerminal().isEmpty());
}

/// The one that would come again: what is on offer now, else what was there before the rollback.
QString FollowUpBar::versionToSkip(const PackageTarget &package) const {
    const OutdatedPackage *offered =
        m_services.inventory.value().outdated({shortName(package.name), package.isCask});
    if (offered)
        return offered->currentVersion;
    return package.installedVersion == package.latestVersion ? QString() : package.installedVersion;
}

void FollowUpBar::skip() {
    for (const PackageTarget &package : rolledBack())
        if (const QString version = versionToSkip(package); !version.isEmpty())
            m_services.userData.snoozePackage(shortName(package.name), version, package.isCask,
                                              UntilNextVersion());
    m_hasSkipped = true;
    offer();
}

QList<PackageTarget> FollowUpBar::rollbackTargets() const {
    QList<PackageTarget> targets;
    for (const PackageResult &result : m_run->report().packages) {
        const PackageTarget &package = result.package;
        if (result.deed == Deed::Upgraded && result.end == PackageEnd::Failed && !package.isCask &&
            m_services.kegs.canRollBack(shortName(package.name), package.installedVersion)) {
            targets.append(package);
            std::swap(targets.last().latestVersion, targets.last().installedVersion);
        }
    }
    return targets;
}

QString FollowUpBar::commandForTerminal() const {
    const QString needed = m_run->failureSummary().commandToCopy;
    return needed.isEmpty() ? m_run->operation()->terminalCommand() : needed;
}

} // namespace larkspur::ui
