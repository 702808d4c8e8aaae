#include "ui/operation/OperationPanel.h"

#include "operations/OperationCenter.h"
#include "operations/outcome/FailureSummary.h"

#include "ui/operation/OutputView.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/ElidedLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

constexpr int updateInterval =
    80; // milliseconds: however fast the output comes, the bar is drawn at a steady pace
constexpr int barSteps = 1000;

QString outcomeIcon(const OperationRun &run) {
    if (run.outcome() == OperationOutcome::Failed)
        return QStringLiteral("failed");
    return run.outcome() == OperationOutcome::CompletedWithWarnings ? QStringLiteral("warning")
                                                                    : QStringLiteral("done");
}

} // namespace

OperationPanel::OperationPanel(FollowUpBar::Services services, QWidget *parent)
    : QFrame(parent)
    , m_operations(services.operations)
    , m_picture(new QLabel(this))
    , m_title(new QLabel(this))
    , m_detail(new ElidedLabel(this))
    , m_bar(new QProgressBar(this))
    , m_stop(new QPushButton(icon(QStringLiteral("stop")), tr("Stop"), this))
    , m_toggle(new QToolButton(this))
    , m_dismiss(new QToolButton(this))
    , m_followUps(new FollowUpBar(services, this))
    , m_summary(new QLabel(this))
    , m_output(new OutputView(this)) {
    QFont bold = m_title->font();
    bold.setWeight(QFont::DemiBold);
    m_title->setFont(bold);
    m_detail->setForegroundRole(QPalette::PlaceholderText);
    m_bar->setTextVisible(false);
    m_bar->setFixedHeight(8);
    m_bar->setAccessibleName(tr("Progress"));
    m_stop->setAccessibleName(tr("Stop the operation"));
    m_toggle->setIcon(icon(QStringLiteral("output")));
    m_toggle->setText(tr("Output"));
    m_toggle->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toggle->setCheckable(true);
    m_toggle->setAccessibleName(tr("Show the output"));
    m_dismiss->setText(tr("Dismiss"));
    m_dismiss->setAccessibleName(tr("Dismiss the finished operation"));
    m_output->hide();
    m_summary->hide();
    m_summary->setWordWrap(true);
    m_summary->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_summary->setContentsMargins(46, 0, 14, 10);

    auto *texts = new QHBoxLayout;
    texts->addWidget(m_title);
    texts->addWidget(m_detail, 1);
    auto *middle = new QVBoxLayout;
    middle->setSpacing(5);
    middle->addLayout(texts);
    middle->addWidget(m_bar);
    auto *row = new QHBoxLayout;
    row->setContentsMargins(14, 8, 12, 8);
    row->setSpacing(10);
    row->addWidget(m_picture);
    row->addLayout(middle, 1);
    for (QWidget *button : QList<QWidget *>{m_followUps, m_stop, m_toggle, m_dismiss})
        row->addWidget(button);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(row);
    layout->addWidget(m_summary);
    layout->addWidget(m_output, 1);
    setFrameShape(QFrame::NoFrame);

    m_updateTimer.setSingleShot(true);
    m_updateTimer.setInterval(updateInterval);
    connect(&m_updateTimer, &QTimer::timeout, this, &OperationPanel::update);
    connect(m_stop, &QPushButton::clicked, this, [this] {
        if (m_run)
            m_run->isStopping() ? m_run->stopRepair() : m_run->stop();
    });
    connect(m_toggle, &QToolButton::toggled, m_output, &QWidget::setVisible);
    connect(m_dismiss, &QToolButton::clicked, this, &QWidget::hide);
    connect(&m_operations, &OperationCenter::started, this, [this](OperationRun *run) {
        if (!m_run || !m_run->isRunning())
            follow(run);
        else
            update();
    });
    connect(&m_operations, &OperationCenter::finished, this, [this] {
        if (OperationRun *next = m_operations.shown(); next && next != m_run && next->isRunning())
            follow(next);
    });
    hide();
}

void OperationPanel::follow(OperationRun *run) {
    if (m_run)
        m_run->disconnect(this);
    m_run = run;
    m_output->follow(run);
    connect(run, &OperationRun::changed, this, [this] {
        if (!m_updateTimer.isActive())
            m_updateTimer.start();
    });
    connect(run, &OperationRun::finished, this, &OperationPanel::update);
    connect(run, &QObject::destroyed, this, [this, run] {
        m_followUps->follow(nullptr);
        m_run = m_run == run ? nullptr : m_run;
    });
    show();
    update();
}

void OperationPanel::setOutputVisible(bool visible) {
    m_toggle->setChecked(visible);
}

bool OperationPanel::isOutputVisible() const {
    return m_toggle->isChecked();
}

void OperationPanel::update() {
    if (!m_run)
        return;
    m_title->setText(m_run->title());
    m_stop->setVisible(m_run->isRunning());
    m_stop->setText(m_run->isStopping() ? tr("Stop at Once") : tr("Stop"));
    m_stop->setToolTip(m_run->isStopping() ? tr("Leaves what is being put right for the next operation.")
                                           : QString());
    m_stop->setEnabled(!m_run->isStoppingRepair());
    m_bar->setVisible(m_run->isRunning());
    m_dismiss->setVisible(!m_run->isRunning());
    m_followUps->follow(m_run->isRunning() ? nullptr : m_run);
    m_summary->hide();
    if (m_run->isRunning())
        updateRunning();
    else
        updateFinished();
}

void OperationPanel::updateRunning() {
    const OperationProgress &progress = m_run->progress();
    m_picture->setPixmap(icon(QStringLiteral("package")).pixmap(QSize(22, 22)));
    QStringList words;
    if (m_run->isStopping())
        words.append(tr("Stopping; Homebrew gets a moment to clean up…"));
    else if (m_run->state() == OperationRun::State::Queued)
        words.append(tr("Waiting for its turn…"));
    else if (m_run->state() == OperationRun::State::AskingForPassword)
        words.append(tr("Waiting for your password…"));
    else if (m_run->silence() > std::chrono::seconds(0))
        words.append(tr("Nothing has come from Homebrew for %1 s. You can wait or stop it.")
                         .arg(m_run->silence().count()));
    else if (const auto item = progress.currentItem())
        words.append(*item);
    if (const auto total = progress.totalSteps(); total && *total > 1 && progress.stepCount() > 0)
        words.append(tr("step %1 of %2").arg(std::min(progress.stepCount(), *total)).arg(*total));
    if (progress.fraction())
        words.append(QStringLiteral("%1 %").arg(qRound(*progress.fraction() * 100)));
    const auto waiting = m_operations.unfinished().size() - 1;
    if (waiting > 0)
        words.append(tr("%1 more waiting").arg(waiting));
    m_detail->setText(words.join(QStringLiteral(" · ")));
    m_bar->setRange(0, progress.fraction() ? barSteps : 0);
    if (progress.fraction())
        m_bar->setValue(static_cast<int>(*progress.fraction() * barSteps));
}

void OperationPanel::updateFinished() {
    m_picture->setPixmap(icon(outcomeIcon(*m_run)).pixmap(QSize(22, 22)));
    const bool hasFailed = m_run->outcome() == OperationOutcome::Failed;
    if (m_run->wasCancelled())
        m_detail->setText(tr("Cancelled. The operation may be incomplete."));
    else if (m_run->wasStopped())
        m_detail->setText(tr("Stopped. The operation may be incomplete."));
    else if (hasFailed)
        showFailure();
    else if (m_run->outcome() == OperationOutcome::CompletedWithWarnings)
        m_detail->setText(tr("Completed with warnings"));
    else
        m_detail->setText(tr("Done"));
    if (hasFailed && !m_run->wasStopped() && !m_run->wasCancelled())
        setOutputVisible(true);
}

void OperationPanel::showFailure() {
    const bool isBatch = m_run->report().packages.size() > 1;
    m_detail->setText(isBatch ? tr("Failed: %1").arg(m_run->report().tally()) : tr("Failed"));
    const FailureSummary summary = m_run->failureSummary();
    QStringList parts{summary.text, summary.suggestion, summary.commandToCopy};
    parts.removeAll(QString());
    m_summary->setText(parts.join(QStringLiteral("\n\n")));
    m_summary->show();
}

} // namespace larkspur::ui
