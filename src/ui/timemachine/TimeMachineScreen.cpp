#include "ui/timemachine/TimeMachineScreen.h"

#include "core/async/TaskScope.h"
#include "operations/OperationCenter.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/snapshots/RestoreSnapshot.h"
#include "operations/snapshots/SnapshotManager.h"
#include "ui/theme/Icons.h"
#include "ui/timemachine/CompareSheet.h"
#include "ui/timemachine/DiffView.h"
#include "ui/timemachine/PackagesChart.h"
#include "ui/timemachine/RestoreSheet.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/ScreenHeader.h"

#include <QHeaderView>
#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

enum Column { Date, Trigger, Formulae, Casks, Note };

QString triggerText(SnapshotTrigger trigger) {
    switch (trigger) {
    case SnapshotTrigger::Manual:
        return TimeMachineScreen::tr("By hand");
    case SnapshotTrigger::PreUpgrade:
        return TimeMachineScreen::tr("Before an upgrade");
    case SnapshotTrigger::Scheduled:
        return TimeMachineScreen::tr("Scheduled");
    }
    return {};
}

using Answer = std::function<void(std::expected<Snapshot, QString>)>;

Task<> readNow(SnapshotManager *manager, QPointer<QObject> screen, Answer done) {
    if (!manager->hasLoaded())
        co_await manager->load();
    auto now = co_await manager->current();
    if (screen)
        done(std::move(now));
}

Task<> finish(Task<bool> task, QPointer<QObject> screen, std::function<void(bool)> done) {
    const bool isDone = co_await task;
    if (screen)
        done(isDone);
}

Task<> takeNow(SnapshotManager *manager, QPointer<QObject> screen, Answer done) {
    auto taken = co_await manager->take(SnapshotTrigger::Manual);
    if (screen)
        done(std::move(taken));
}

} // namespace

TimeMachineScreen::TimeMachineScreen(Services services)
    : m_services(services)
    , m_header(new ScreenHeader(tr("Time Machine"), tr("Filter restore points")))
    , m_stack(new QStackedWidget)
    , m_empty(new EmptyState)
    , m_chart(new PackagesChart)
    , m_timeline(new QTreeWidget)
    , m_title(new QLabel)
    , m_problem(new QLabel)
    , m_changes(new DiffView)
    , m_take(new QPushButton(icon(QStringLiteral("timemachine")), tr("Take Restore Point")))
    , m_compare(new QPushButton(tr("Compare…")))
    , m_removeAll(new QPushButton(tr("Delete All…")))
    , m_restore(new QPushButton(tr("Restore…")))
    , m_remove(new QPushButton(tr("Delete…"))) {
    for (QPushButton *button : {m_removeAll, m_compare, m_take})
        m_header->addControl(button);
    auto *splitter = new QSplitter;
    splitter->addWidget(makeTimeline());
    splitter->addWidget(makeDetails());
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setHandleWidth(1);
    splitter->setChildrenCollapsible(false);
    m_stack->addWidget(m_empty);
    m_stack->addWidget(splitter);
    m_problem->setContentsMargins(16, 4, 16, 6);
    m_problem->setWordWrap(true);
    m_problem->hide();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_header);
    layout->addWidget(m_problem);
    layout->addWidget(m_stack, 1);
    connect(m_take, &QPushButton::clicked, this, &TimeMachineScreen::take);
    connect(m_compare, &QPushButton::clicked, this, &TimeMachineScreen::compare);
    connect(m_removeAll, &QPushButton::clicked, this, &TimeMachineScreen::removeAll);
    connect(m_restore, &QPushButton::clicked, this, &TimeMachineScreen::restore);
    connect(m_remove, &QPushButton::clicked, this, &TimeMachineScreen::removeSelected);
    connect(m_empty, &EmptyState::actionRequested, this, &TimeMachineScreen::take);
    connect(m_header->filter(), &QLineEdit::textChanged, this, &TimeMachineScreen::applyFilter);
    // Queued: a note that was edited changes the list from inside the list's own signal.
    connect(&services.snapshots, &SnapshotManager::changed, this, &TimeMachineScreen::reload,
            Qt::QueuedConnection);
    connect(&services.operations, &OperationCenter::finished, this, [this] {
        if (isVisible())
            compareWithNow();
    });
    reload();
}

QWidget *TimeMachineScreen::makeTimeline() {
    m_timeline->setHeaderLabels({tr("Date"), tr("Taken"), tr("Formulae"), tr("Casks"), tr("Note")});
    m_timeline->setRootIsDecorated(false);
    m_timeline->setAlternatingRowColors(false);
    m_timeline->setUniformRowHeights(true);
    m_timeline->setFrameShape(QFrame::NoFrame);
    m_timeline->setAccessibleName(tr("Restore points"));
    m_timeline->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_timeline->setToolTip(tr("A double click edits the note."));
    connect(m_timeline, &QTreeWidget::currentItemChanged, this, &TimeMachineScreen::onSelected);
    connect(m_timeline, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item, int column) {
        if (column == Note)
            change(m_services.snapshots.setNote(item->data(Date, Qt::UserRole).toUuid(),
                                                item->text(Note).trimmed()),
                   tr("The note could not be saved."));
    });
    auto *whole = new QWidget;
    auto *layout = new QVBoxLayout(whole);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_chart);
    layout->addWidget(m_timeline, 1);
    return whole;
}

QWidget *TimeMachineScreen::makeDetails() {
    QFont bold = m_title->font();
    bold.setWeight(QFont::DemiBold);
    m_title->setFont(bold);
    m_title->setWordWrap(true);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_restore);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    auto *whole = new QWidget;
    auto *layout = new QVBoxLayout(whole);
    layout->setContentsMargins(16, 14, 12, 10);
    layout->setSpacing(10);
    layout->addWidget(m_title);
    layout->addLayout(buttons);
    layout->addWidget(m_changes, 1);
    return whole;
}

QLineEdit *TimeMachineScreen::filterField() const {
    return m_header->filter();
}

void TimeMachineScreen::showEvent(QShowEvent *event) {
    Screen::showEvent(event);
    compareWithNow();
}

void TimeMachineScreen::say(const QString &text) {
    m_problem->setText(text);
    m_problem->show();
}

void TimeMachineScreen::compareWithNow() {
    m_problem->hide();
    m_services.tasks.spawn(QStringLiteral("The look at what is installed"),
                           readNow(&m_services.snapshots, this, [this](std::expected<Snapshot, QString> now) {
                               // What was said meanwhile stays.
                               if (now) {
                                   showNow(*now);
                                   return;
                               }
                               m_now.reset(); // nothing is restored on what was so earlier
                               onSelected();
                               m_changes->clear();
                               say(now.error());
                           }));
}

void TimeMachineScreen::showNow(const Snapshot &now) {
    m_now = now;
    onSelected();
}

void TimeMachineScreen::reload() {
    const QList<Snapshot> &snapshots = m_services.snapshots.snapshots();
    const QUuid current = selected() ? selected()->id : QUuid();
    const QSignalBlocker quiet(m_timeline);
    m_timeline->clear();
    for (const Snapshot &snapshot : snapshots) {
        auto *item = new QTreeWidgetItem(
            m_timeline, {QLocale().toString(snapshot.date.toLocalTime(), QLocale::ShortFormat),
                         triggerText(snapshot.trigger), QString::number(snapshot.formulae.size()),
                         QString::number(snapshot.casks.size()), snapshot.note.value_or(QString())});
        item->setData(Date, Qt::UserRole, snapshot.id);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setSizeHint(Date, QSize(m_timeline->fontMetrics().horizontalAdvance(item->text(Date)) + 24,
                                      m_timeline->fontMetrics().height() + 12));
        if (snapshot.id == current || (current.isNull() && m_timeline->topLevelItemCount() == 1))
            m_timeline->setCurrentItem(item);
    }
    if (!m_timeline->currentItem() && m_timeline->topLevelItemCount() > 0)
        m_timeline->setCurrentItem(m_timeline->topLevelItem(0));
    for (const int column : {Date, Trigger, Formulae, Casks})
        m_timeline->resizeColumnToContents(column);
    m_chart->setSnapshots(snapshots);
    m_stack->setCurrentIndex(snapshots.isEmpty() ? 0 : 1);
    m_compare->setEnabled(snapshots.size() > 1);
    m_removeAll->setEnabled(!snapshots.isEmpty());
    const QString failure = m_services.snapshots.failure();
    m_empty->show(
        QStringLiteral("timemachine"),
        failure.isEmpty() ? tr("No Restore Points") : tr("The Restore Points Cannot Be Read"),
        failure.isEmpty()
            ? tr("One is taken before every upgrade. Take one now to be able to come back to this moment.")
            : failure,
        tr("Take Restore Point"));
    const auto unreadable = m_services.snapshots.unreadable().size();
    m_header->setSubtitle(unreadable == 0
                              ? tr("%1 restore points").arg(snapshots.size())
                              : tr("%1 restore points · %2 files cannot be read: %3")
                                    .arg(snapshots.size())
                                    .arg(unreadable)
                                    .arg(m_services.snapshots.unreadable().join(QStringLiteral(", "))));
    applyFilter();
    onSelected();
}

void TimeMachineScreen::applyFilter() {
    const QString text = m_header->filter()->text();
    for (int i = 0; i < m_timeline->topLevelItemCount(); ++i) {
        QTreeWidgetItem *item = m_timeline->topLevelItem(i);
        const bool matches = item->text(Date).contains(text, Qt::CaseInsensitive) ||
                             item->text(Trigger).contains(text, Qt::CaseInsensitive) ||
                             item->text(Note).contains(text, Qt::CaseInsensitive);
        item->setHidden(!matches);
    }
}

const Snapshot *TimeMachineScreen::selected() const {
    const QTreeWidgetItem *item = m_timeline->currentItem();
    return item ? m_services.snapshots.find(item->data(Date, Qt::UserRole).toUuid()) : nullptr;
}

void TimeMachineScreen::onSelected() {
    const Snapshot *snapshot = selected();
    m_restore->setEnabled(snapshot && m_now);
    m_remove->setEnabled(snapshot);
    m_chart->select(snapshot ? snapshot->id : QUuid());
    if (!snapshot) {
        m_title->clear();
        m_changes->clear();
        return;
    }
    m_title->setText(
        tr("Since %1").arg(QLocale().toString(snapshot->date.toLocalTime(), QLocale::ShortFormat)));
    if (!m_now) {
        m_changes->showText(tr("Looking at what is installed…"));
        return;
    }
    const SnapshotDiff diff = compareSnapshots(*snapshot, *m_now);
    if (diff.isEmpty())
        m_changes->showText(tr("Your installed packages already match this snapshot."));
    else
        m_changes->showDiff(diff, tr("Removed since"), tr("Installed since"));
}

void TimeMachineScreen::take() {
    m_take->setEnabled(false);
    m_services.tasks.spawn(
        QStringLiteral("The taking of a restore point"),
        takeNow(&m_services.snapshots, this, [this](std::expected<Snapshot, QString> taken) {
            m_take->setEnabled(true);
            say(taken ? tr("Restore point saved") : taken.error());
        }));
}

void TimeMachineScreen::restore() {
    const Snapshot *snapshot = selected();
    if (!snapshot || !m_now)
        return;
    auto *sheet = new RestoreSheet(*snapshot, planRestore(*snapshot, *m_now, m_services.kegs), window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::accepted, this, [this, sheet] {
        m_services.operations.start(restoreSnapshot(m_services.packages, sheet->order()));
    });
    sheet->open();
}

void TimeMachineScreen::compare() {
    auto *sheet = new CompareSheet(m_services.snapshots.snapshots(), window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void TimeMachineScreen::change(Task<bool> task, const QString &failure) {
    m_problem->hide();
    m_services.tasks.spawn(QStringLiteral("A change of the restore points"),
                           finish(std::move(task), this, [this, failure](bool isDone) {
                               if (!isDone)
                                   say(failure);
                           }));
}

void TimeMachineScreen::removeSelected() {
    if (const Snapshot *snapshot = selected())
        confirm(tr("Delete this restore point?"), tr("This can't be undone."), [this, id = snapshot->id] {
            change(m_services.snapshots.remove({id}), tr("The restore point could not be deleted."));
        });
}

void TimeMachineScreen::removeAll() {
    confirm(tr("Delete all %1 restore points?").arg(m_services.snapshots.snapshots().size()),
            tr("This can't be undone. Automatic snapshots will resume before your next upgrade."), [this] {
                change(m_services.snapshots.removeAll(), tr("Not every restore point could be deleted."));
            });
}

void TimeMachineScreen::confirm(const QString &title, const QString &text,
                                const std::function<void()> &action) {
    auto *question =
        new QMessageBox(QMessageBox::Warning, tr("Delete"), title, QMessageBox::Cancel, window());
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setInformativeText(text);
    const QAbstractButton *yes = question->addButton(tr("Delete"), QMessageBox::DestructiveRole);
    connect(question, &QMessageBox::buttonClicked, this, [question, yes, action](QAbstractButton *clicked) {
        if (clicked == yes)
            action();
        question->close();
    });
    question->open();
}

} // namespace larkspur::ui
