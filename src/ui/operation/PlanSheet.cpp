#include "ui/operation/PlanSheet.h"

#include "core/async/TaskScope.h"
#include "core/settings/Preferences.h"
#include "operations/plan/OperationPlanner.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace larkspur::ui {

namespace {

Task<> makePlan(OperationPlanner *planner, OperationRequest request, StopToken stop, QPointer<QObject> sheet,
                std::function<void(const OperationPlan &)> done) {
    const OperationPlan plan = co_await planner->plan(std::move(request), std::move(stop));
    if (sheet)
        done(plan);
}

QString question(const OperationRequest &request) {
    const bool isRemoval = request.kind == OperationKind::Uninstall;
    const QString verb = isRemoval ? PlanSheet::tr("Uninstall") : PlanSheet::tr("Upgrade");
    if (request.kind == OperationKind::UpgradeAll)
        return PlanSheet::tr("Upgrade everything that is outdated?");
    return request.packages.size() == 1
               ? QStringLiteral("%1 %2?").arg(verb, request.packages.first().name)
               : PlanSheet::tr("%1 %2 packages?").arg(verb).arg(request.packages.size());
}

QString roleText(PlannedChange::Role role) {
    switch (role) {
    case PlannedChange::Role::Dependency:
        return PlanSheet::tr("needed by it");
    case PlannedChange::Role::Dependent:
        return PlanSheet::tr("needs it");
    case PlannedChange::Role::Named:
        break;
    }
    return {};
}

} // namespace

PlanSheet::PlanSheet(Services services, OperationRequest request, QWidget *parent)
    : QDialog(parent)
    , m_request(std::move(request))
    , m_state(new QLabel(tr("Asking Homebrew what will happen…")))
    , m_changes(new QTreeWidget)
    , m_remarks(new QLabel)
    , m_again(new QCheckBox(tr("Show this before every upgrade and removal"))) {
    const bool isRemoval = m_request.kind == OperationKind::Uninstall;
    setWindowTitle(isRemoval ? tr("Uninstall") : tr("Upgrade"));
    setMinimumWidth(520);
    auto *title = new QLabel(question(m_request));
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    title->setWordWrap(true);
    m_state->setForegroundRole(QPalette::PlaceholderText);
    m_changes->setHeaderLabels(
        {tr("Package"), tr("Installed"), isRemoval ? tr("Then") : tr("New version"), QString()});
    m_changes->setRootIsDecorated(false);
    m_changes->setAccessibleName(tr("What will change"));
    m_changes->hide();
    m_remarks->setWordWrap(true);
    m_remarks->hide();
    m_again->setChecked(services.preferences.boolean(keys::showOperationPlan, true));
    connect(m_again, &QCheckBox::toggled, this,
            [&preferences = services.preferences](bool on) { preferences.set(keys::showOperationPlan, on); });
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setAutoDefault(false);
    m_start = buttons->addButton(isRemoval ? tr("Uninstall") : tr("Upgrade"), QDialogButtonBox::AcceptRole);
    m_start->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(22, 20, 22, 16);
    layout->setSpacing(12);
    layout->addWidget(title);
    layout->addWidget(m_state);
    layout->addWidget(m_changes, 1);
    layout->addWidget(m_remarks);
    layout->addWidget(m_again);
    layout->addWidget(buttons);
    services.tasks.spawn(QStringLiteral("The plan of an operation"),
                         makePlan(&services.planner, m_request, m_stop.get_token(), this,
                                  [this](const OperationPlan &plan) { show(plan); }));
}

PlanSheet::~PlanSheet() {
    m_stop.request_stop();
}

void PlanSheet::show(const OperationPlan &plan) {
    if (m_request.isUpgrade() && plan.failure.isEmpty()) {
        m_request.replacedFormulae = QStringList();
        for (const PlannedChange &change : plan.changes)
            m_request.replacedFormulae->append(change.name);
    }
    const bool isRemoval = m_request.kind == OperationKind::Uninstall;
    for (const PlannedChange &change : plan.changes)
        m_changes->addTopLevelItem(new QTreeWidgetItem(
            {change.name, change.from, isRemoval ? tr("removed") : change.to, roleText(change.role)}));
    for (int column = 0; column < m_changes->columnCount(); ++column)
        m_changes->resizeColumnToContents(column);
    constexpr int shownRows = 9;
    const int rows = std::clamp(m_changes->topLevelItemCount(), 1, shownRows);
    m_changes->setMinimumHeight(m_changes->header()->sizeHint().height() +
                                rows * (m_changes->fontMetrics().height() + 7) + 6);
    m_changes->setVisible(!plan.changes.isEmpty());
    m_state->setVisible(plan.changes.isEmpty());
    m_state->setText(plan.failure.isEmpty() ? tr("Homebrew has nothing to change.") : QString());
    addRemarks(plan);
    adjustSize();
}

void PlanSheet::addRemarks(const OperationPlan &plan) {
    OperationPlan withoutChanges = plan;
    withoutChanges.changes.clear();
    const QStringList remarks = describePlan(m_request, withoutChanges);
    m_remarks->setText(remarks.join(QLatin1Char('\n')));
    m_remarks->setVisible(!remarks.isEmpty());
}

} // namespace larkspur::ui
