#include "ui/operation/OperationPanel.h"

#include "core/brew/PackageName.h"
#include "operations/OperationCenter.h"
#include "operations/TerminalCommand.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/outcome/FailureSummary.h"

#include "ui/operation/OutputView.h"
#include "ui/operation/RunInTerminal.h"
#include "ui/theme/Icons.h"

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

OperationPanel::OperationPanel(OperationCenter &operations, KegPreservationManager &kegs, QWidget *parent)
    : QFrame(parent)
    , m_operations(operations)
    , m_kegs(kegs)
    , m_picture(new QLabel(this))
    , m_title(new QLabel(this))
    , m_detail(new QLabel(this))
    , m_bar(new QProgressBar(this))
    , m_stop(new QPushButton(icon(QStringLiteral("stop")), tr("Stop"), this))
    , m_toggle(new QToolButton(this))
    , m_dismiss(new QToolButton(this))
    , m_restart(new QPushButton(icon(QStringLiteral("services")), QString(), this))
    , m_hold(new QPushButton(icon(QStringLiteral("pinned")), QString(), this))
    , m_rollBack(new QPushButton(icon(QStringLiteral("timemachine")), tr("Roll Back"), this))
    , m_terminal(new QPushButton(icon(QStringLiteral("output")), tr("Run in Terminal"), this))
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
    m_summary->setTextFormat(Qt::PlainText);
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
    for (QWidget *button :
         QList<QWidget *>{m_restart, m_hold, m_rollBack, m_terminal, m_stop, m_toggle, m_dismiss})
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
            m_run->stop();
    });
    connect(m_toggle, &QToolButton::toggled, m_output, &QWidget::setVisible);
    connect(m_dismiss, &QToolButton::clicked, this, &QWidget::hide);
    connect(m_restart, &QPushButton::clicked, this, &OperationPanel::restartServices);
    connect(m_hold, &QPushButton::clicked, this, [this] {
        m_operations.start({.kind = OperationKind::Pin, .packages = m_run->request().packages});
    });
    connect(m_rollBack, &QPushButton::clicked, this,
            [this] { m_operations.start({.kind = OperationKind::RollBack, .packages = rollbackTargets()}); });
    connect(m_terminal, &QPushButton::clicked, this,
            [this] { runInTerminal(commandForTerminal(), window()); });
    connect(&operations, &OperationCenter::started, this, [this](OperationRun *run) {
        if (!m_run || !m_run->isRunning())
            follow(run);
        else
            update();
    });
    connect(&operations, &OperationCenter::finished, this, [this] {
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
    connect(run, &QObject::destroyed, this, [this, run] { m_run = m_run == run ? nullptr : m_run; });
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
    m_stop->setEnabled(!m_run->isStopping());
    m_bar->setVisible(m_run->isRunning());
    m_dismiss->setVisible(!m_run->isRunning());
    for (QWidget *button : QList<QWidget *>{m_restart, m_hold, m_rollBack, m_terminal})
        button->hide();
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
    m_terminal->setVisible(hasFailed && !m_run->wasStopped() && !commandForTerminal().isEmpty());
    offerWhatFollows();
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

void OperationPanel::offerWhatFollows() {
    const QStringList services = m_run->report().servicesToRestart;
    m_restart->setVisible(!services.isEmpty());
    m_restart->setText(services.size() == 1 ? tr("Restart %1").arg(services.first())
                                            : tr("Restart %1 Services").arg(services.size()));
    const OperationRequest &request = m_run->request();
    const bool isRolledBack =
        request.kind == OperationKind::RollBack && m_run->outcome() != OperationOutcome::Failed;
    m_hold->setVisible(isRolledBack);
    m_hold->setText(request.packages.size() == 1 ? tr("Pin %1").arg(request.packages.first().name)
                                                 : tr("Pin Them"));
    m_hold->setToolTip(
        tr("A pinned formula keeps its version; otherwise the next upgrade undoes the rollback."));
    m_rollBack->setVisible(m_run->outcome() == OperationOutcome::Failed && !rollbackTargets().isEmpty());
}

/// The formulae of a failed upgrade that were preserved before it.
QList<PackageTarget> OperationPanel::rollbackTargets() const {
    QList<PackageTarget> targets;
    if (!m_run || m_run->request().kind != OperationKind::Upgrade)
        return targets;
    for (const auto &[package, end] : m_run->report().packages)
        if (end == PackageEnd::Failed && !package.isCask &&
            m_kegs.canRollBack(shortName(package.name), package.installedVersion)) {
            targets.append(package);
            targets.last().latestVersion = package.installedVersion;
        }
    return targets;
}

void OperationPanel::restartServices() {
    OperationRequest request{.kind = OperationKind::RestartService};
    for (const QString &name : m_run->report().servicesToRestart)
        request.packages.append({.name = name});
    m_operations.start(request);
}

QString OperationPanel::commandForTerminal() const {
    if (!m_run)
        return {};
    const QString needed = summarizeFailure(m_run->request(), m_run->transcript().lines()).commandToCopy;
    return needed.isEmpty() ? terminalCommand(m_run->request()) : needed;
}

void OperationPanel::showFailure() {
    m_detail->setText(tr("Failed"));
    const FailureSummary summary = summarizeFailure(m_run->request(), m_run->transcript().lines());
    QStringList parts{summary.text, summary.suggestion, summary.commandToCopy};
    parts.removeAll(QString());
    m_summary->setText(parts.join(QStringLiteral("\n\n")));
    m_summary->show();
}

} // namespace larkspur::ui
