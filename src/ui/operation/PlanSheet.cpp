#include "ui/operation/PlanSheet.h"

#include "core/async/TaskScope.h"
#include "core/settings/Preferences.h"

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

Task<> makePlan(OperationPtr operation, StopToken stop, QPointer<QObject> sheet,
                std::function<void(const OperationPlan &)> done) {
    const OperationPlan plan = co_await operation->plan(std::move(stop));
    if (sheet)
        done(plan);
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

PlanSheet::PlanSheet(Services services, OperationPtr operation, QWidget *parent)
    : QDialog(parent)
    , m_operation(std::move(operation))
    , m_question(m_operation->question().value_or(PlanQuestion()))
    , m_state(new QLabel(tr("Asking Homebrew what will happen…")))
    , m_changes(new QTreeWidget)
    , m_remarks(new QLabel)
    , m_again(new QCheckBox(tr("Show this before every upgrade and removal"))) {
    setWindowTitle(m_question.action);
    setMinimumWidth(520);
    auto *title = new QLabel(m_question.text);
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    title->setWordWrap(true);
    m_state->setForegroundRole(QPalette::PlaceholderText);
    m_changes->setHeaderLabels(
        {tr("Package"), tr("Installed"), m_question.removes ? tr("Then") : tr("New version"), QString()});
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
    m_start = buttons->addButton(m_question.action, QDialogButtonBox::AcceptRole);
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
    services.tasks.spawn(
        QStringLiteral("The plan of an operation"),
        makePlan(m_operation, m_stop.get_token(), this, [this](const OperationPlan &plan) { show(plan); }));
}

PlanSheet::~PlanSheet() {
    m_stop.request_stop();
}

void PlanSheet::show(const OperationPlan &plan) {
    m_operation->agree(plan); // starting it without having seen this is not possible any more
    for (const PlannedChange &change : plan.changes)
        m_changes->addTopLevelItem(
            new QTreeWidgetItem({change.name, change.from, m_question.removes ? tr("removed") : change.to,
                                 roleText(change.role)}));
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
    const QStringList remarks = describePlan(withoutChanges);
    m_remarks->setText(remarks.join(QLatin1Char('\n')));
    m_remarks->setVisible(!remarks.isEmpty());
}

} // namespace larkspur::ui
