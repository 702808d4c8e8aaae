#include "ui/timemachine/RestoreSheet.h"

#include "ui/timemachine/DiffView.h"
#include "ui/widgets/HelpLabel.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

QStringList rowOf(const SnapshotEntry &entry) {
    return {entry.isCask ? RestoreSheet::tr("%1 (cask)").arg(entry.name) : entry.name, entry.version};
}

QList<QStringList> rowsOf(const QList<SnapshotEntry> &entries) {
    QList<QStringList> rows;
    for (const SnapshotEntry &entry : entries)
        rows.append(rowOf(entry));
    return rows;
}

QList<QStringList> rowsOf(const QList<SnapshotVersionChange> &changes) {
    QList<QStringList> rows;
    for (const SnapshotVersionChange &change : changes)
        rows.append({rowOf(change.entry).first(),
                     QStringLiteral("%1 → %2").arg(change.currentVersion, change.entry.version)});
    return rows;
}

} // namespace

RestoreSheet::RestoreSheet(const Snapshot &snapshot, RestorePlan plan, QWidget *parent)
    : QDialog(parent)
    , m_snapshot(snapshot.id)
    , m_plan(std::move(plan))
    , m_removeAdded(new QCheckBox(tr("Also remove packages added since")))
    , m_rollBack(new QCheckBox(tr("Roll formulae back to the snapshot version")))
    , m_changes(new DiffView) {
    setWindowTitle(tr("Restore"));
    resize(560, 540);
    auto *title = new QLabel(tr("Restoring snapshot from %1")
                                 .arg(QLocale().toString(snapshot.date.toLocalTime(), QLocale::ShortFormat)));
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 20, 22, 16);
    layout->setSpacing(10);
    layout->addWidget(title);
    layout->addWidget(
        helpLabel(tr("Reinstalls packages removed since this point. Formulae with a saved copy can "
                     "optionally be rolled back to the snapshot version below.")));
    layout->addWidget(m_changes, 1);
    if (!m_plan.notRollable.isEmpty())
        layout->addWidget(helpLabel(
            tr("No saved copies are available for these versions, so they can't be rolled back. Larkspur "
               "can only roll back upgrades it performed (a keg is preserved before each upgrade).")));
    layout->addWidget(m_removeAdded);
    layout->addWidget(m_rollBack);
    layout->addWidget(
        helpLabel(tr("Restores the exact files Larkspur saved before the upgrade — no rebuild, no "
                     "download. Casks and versions without a saved copy can't be rolled back.")));
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setAutoDefault(false);
    QPushButton *start = buttons->addButton(tr("Restore"), QDialogButtonBox::AcceptRole);
    start->setEnabled(!m_plan.changesNothing());
    m_removeAdded->setEnabled(!m_plan.added.isEmpty());
    m_rollBack->setEnabled(!m_plan.rollable.isEmpty());
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_removeAdded, &QCheckBox::toggled, this, &RestoreSheet::update);
    connect(m_rollBack, &QCheckBox::toggled, this, &RestoreSheet::update);
    update();
}

RestoreOrder RestoreSheet::order() const {
    return {.snapshot = m_snapshot,
            .removesAdded = m_removeAdded->isChecked(),
            .rollsBackVersions = m_rollBack->isChecked(),
            .agreed = agreementTo(m_plan)};
}

void RestoreSheet::update() {
    m_changes->clear();
    if (m_plan.changesNothing())
        m_changes->addGroup(
            tr("Nothing to restore"),
            m_plan.isEmpty()
                ? QList<QStringList>{{tr("Your installed packages already match this snapshot.")}}
                : QList<QStringList>{{tr("What can be read of it is already installed.")}});
    QList<QStringList> taps;
    for (const QString &tap : m_plan.missingTaps)
        taps.append({tap});
    m_changes->addGroup(tr("Taps to add"), taps);
    m_changes->addGroup(tr("In the snapshot but missing now"), rowsOf(m_plan.missing));
    m_changes->addGroup(m_rollBack->isChecked() ? tr("Will be rolled back to the snapshot version")
                                                : tr("Installed at a different version"),
                        rowsOf(m_plan.rollable));
    m_changes->addGroup(tr("At a different version, without a saved copy"), rowsOf(m_plan.notRollable));
    QList<QStringList> refusals;
    for (const QString &refusal : m_plan.refusals)
        refusals.append({refusal});
    m_changes->addGroup(tr("Left out of this restore point"), refusals);
    m_changes->addGroup(m_removeAdded->isChecked() ? tr("Installed since the snapshot — will be uninstalled")
                                                   : tr("Installed since the snapshot — left untouched"),
                        rowsOf(m_plan.added));
    m_changes->addGroup(tr("Perhaps installed since the snapshot — left untouched"), rowsOf(m_plan.kept));
}

} // namespace larkspur::ui
