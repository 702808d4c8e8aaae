#include "ui/MainWindow.h"

#include "app/Larkspur.h"
#include "ui/Screen.h"
#include "ui/ScreenRegistry.h"
#include "ui/Sidebar.h"
#include "ui/authorization/PasswordSheet.h"
#include "ui/operation/OperationPanel.h"
#include "ui/settings/NotSavedAlert.h"
#include "ui/settings/SettingsDialog.h"
#include "ui/startup/RecoveryNotice.h"
#include "ui/startup/RefreshBanner.h"
#include "ui/startup/StartupScreen.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/PlainText.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QVersionNumber>

#include <algorithm>

namespace larkspur::ui {

namespace {

constexpr int longestWaitForPaint = 500; // milliseconds

bool isNewerVersion(const std::optional<QString> &candidate, const QString &current) {
    return candidate && QVersionNumber::fromString(*candidate) > QVersionNumber::fromString(current);
}

Task<> check(StartupCheck *startup, StopToken stop, QPointer<QObject> window,
             std::function<void(StartupOutcome)> done) {
    const StartupOutcome outcome = co_await startup->run(std::move(stop));
    if (window)
        done(outcome);
}

Task<> recover(Larkspur *larkspur, QPointer<QWidget> window) {
    const auto notice = std::make_shared<RecoveryNotice>();
    const StopToken stop = larkspur->stopToken();
    co_await larkspur->recoverFromCrash(stop, notice, Recovery::Patience::Waits);
    if (window && !stop.stop_requested())
        notice->show(window);
}

} // namespace

MainWindow::MainWindow(Larkspur &larkspur)
    : m_larkspur(larkspur)
    , m_pages(new QStackedWidget(this))
    , m_startup(new StartupScreen)
    , m_splitter(new QSplitter(Qt::Horizontal))
    , m_sidebar(new Sidebar)
    , m_brewVersion(new QLabel)
    , m_screenStack(new QStackedWidget)
    , m_operationPanel(new OperationPanel(FollowUpBar::Services{larkspur.operations(), larkspur.packages(),
                                                                larkspur.inventory(), larkspur.kegs(),
                                                                larkspur.userData()})) {
    keepTextPlain();
    new PasswordSheet(larkspur.sudoAuth(), this); // opens by itself
    setWindowTitle(QStringLiteral("Larkspur") + larkspur.locations().titleSuffix);
    setWindowIcon(QIcon(QStringLiteral(":/larkspur.svg")));
    m_splitter->addWidget(makeSidebarColumn());
    auto *banner = new RefreshBanner(larkspur.inventory());
    connect(banner, &RefreshBanner::retryRequested, this, &MainWindow::refresh);
    auto *screens = new QWidget;
    auto *column = new QVBoxLayout(screens);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(banner);
    column->addWidget(m_screenStack, 1);
    m_splitter->addWidget(screens);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setHandleWidth(1);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({190, 910});
    auto *vertical = new QSplitter(Qt::Vertical);
    vertical->addWidget(m_splitter);
    vertical->addWidget(m_operationPanel);
    vertical->setChildrenCollapsible(false);
    vertical->setHandleWidth(1);
    vertical->setStretchFactor(0, 3);
    vertical->setStretchFactor(1, 1);
    m_pages->addWidget(m_startup);
    m_pages->addWidget(vertical);
    setCentralWidget(m_pages);
    makeMenus();
    restoreLayout();
    m_firstCheck.setSingleShot(true);
    connect(&m_firstCheck, &QTimer::timeout, this, &MainWindow::checkHomebrew);

    connect(m_sidebar, &Sidebar::screenChosen, this, &MainWindow::showScreen);
    connect(m_startup, &StartupScreen::retryRequested, this, &MainWindow::checkHomebrew);
    connect(m_startup, &StartupScreen::settingsRequested, this, &MainWindow::showSettings);
    connect(&larkspur.inventory(), &InventoryState::changed, this, &MainWindow::onInventoryChanged);
    connect(&larkspur.userData(), &UserDataManager::snoozedPackagesChanged, this,
            &MainWindow::onInventoryChanged);
    connect(&larkspur.preferences(), &Preferences::choiceNotSaved, this,
            [this](const QString &reason) { tellNotSaved(reason, this); });
    connect(&larkspur.operations(), &OperationCenter::finished, this, [this] {
        if (m_closesWhenIdle && m_larkspur.operations().unfinished().isEmpty())
            close();
    });
}

MainWindow::~MainWindow() = default;

QWidget *MainWindow::makeSidebarColumn() {
    auto *column = new QWidget;
    column->setAutoFillBackground(true);
    column->setPalette(m_sidebar->palette());
    column->setBackgroundRole(QPalette::Base);
    m_brewVersion->setContentsMargins(14, 6, 10, 10);
    m_brewVersion->setForegroundRole(QPalette::PlaceholderText);
    m_brewVersion->setWordWrap(true);
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 6, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_sidebar, 1);
    layout->addWidget(m_brewVersion);
    return column;
}

void MainWindow::makeMenus() {
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(icon(QStringLiteral("refresh")), tr("&Refresh"), QKeySequence::Refresh, this,
                    &MainWindow::refresh);
    file->addSeparator();
    QAction *settings =
        file->addAction(icon(QStringLiteral("settings")), tr("&Settings…"),
                        QKeySequence(QStringLiteral("Ctrl+,")), this, &MainWindow::showSettings);
    settings->setMenuRole(QAction::PreferencesRole);
    QAction *quit = file->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);
    quit->setMenuRole(QAction::QuitRole);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addAction(tr("&Find"), QKeySequence::Find, this, [this] {
        Screen *screen = m_screens.value(m_currentScreen);
        if (QLineEdit *field = screen ? screen->filterField() : nullptr) {
            field->setFocus(Qt::ShortcutFocusReason);
            field->selectAll();
        }
    });
    QMenu *view = menuBar()->addMenu(tr("&View"));
    for (const ScreenEntry &entry : screenRegistry())
        view->addAction(icon(entry.icon), entry.title, entry.shortcut, this,
                        [this, id = entry.id] { showScreen(id); });
    view->addSeparator();
    QAction *simple = view->addAction(tr("Simple Mode"));
    simple->setCheckable(true);
    simple->setChecked(m_larkspur.preferences().boolean(keys::simpleMode));
    m_sidebar->setSimpleMode(simple->isChecked());
    connect(simple, &QAction::toggled, this, [this](bool on) {
        m_larkspur.preferences().set(keys::simpleMode, on);
        m_sidebar->setSimpleMode(on);
    });
    view->addAction(icon(QStringLiteral("output")), tr("Operation &Output"),
                    QKeySequence(QStringLiteral("Ctrl+L")), this,
                    [this] { m_operationPanel->setOutputVisible(!m_operationPanel->isOutputVisible()); });
}

void MainWindow::start() {
    m_larkspur.refresh().showCache();
    m_larkspur.keepInventoryFresh();
    m_larkspur.tasks().spawn(QStringLiteral("The recovery after a crash"), recover(&m_larkspur, this));
    // The cached lists are there at once; the check runs behind them, and in front only where there are none.
    showScreen(screenRegistry().first().id);
    QStringList damage{m_larkspur.preferences().damage(), m_larkspur.userData().snoozedDamage(),
                       m_larkspur.userData().historyDamage()};
    damage.removeAll(QString());
    if (!damage.isEmpty())
        tellDamaged(damage, this);
    m_pages->setCurrentIndex(m_larkspur.inventory().value().hasLoaded ? 1 : 0);
    // A window that is not painted, because it opens minimised, say, is not waited for.
    m_firstCheck.start(longestWaitForPaint);
}

bool MainWindow::event(QEvent *event) {
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::Paint && m_firstCheck.isActive())
        m_firstCheck.start(0); // the list is on the screen: now brew may take the processor
    return handled;
}

void MainWindow::checkHomebrew() {
    if (m_isChecking)
        return;
    m_isChecking = true;
    if (!m_larkspur.inventory().value().hasLoaded || m_pages->currentIndex() == 0)
        m_startup->showChecking();
    m_larkspur.tasks().spawn(QStringLiteral("The start-up check"),
                             check(&m_larkspur.startupCheck(), m_larkspur.stopToken(), this,
                                   [this](StartupOutcome outcome) { onChecked(outcome); }));
}

void MainWindow::onChecked(StartupOutcome outcome) {
    m_isChecking = false;
    m_isReady = outcome == StartupOutcome::Ready;
    switch (outcome) {
    case StartupOutcome::BrewNotInstalled:
        m_startup->showBrewNotInstalled();
        break;
    case StartupOutcome::XcodeSetupRequired:
        m_startup->showXcodeSetup();
        break;
    case StartupOutcome::Ready:
        refresh();
        break;
    }
    m_pages->setCurrentIndex(m_isReady ? 1 : 0);
}

void MainWindow::refresh() {
    if (!m_isReady) {
        checkHomebrew();
        return;
    }
    m_larkspur.tasks().spawn(QStringLiteral("The look for a newer Homebrew"),
                             m_larkspur.releaseCheck().run(m_larkspur.stopToken()));
    m_larkspur.tasks().spawn(QStringLiteral("The refresh"),
                             m_larkspur.refresh().refresh(m_larkspur.stopToken()));
}

void MainWindow::onInventoryChanged() {
    const Inventory &inventory = m_larkspur.inventory().value();
    m_sidebar->updateCounts(inventory, m_larkspur.userData());
    QString version = inventory.brewVersion ? tr("Homebrew %1").arg(*inventory.brewVersion) : QString();
    if (inventory.brewVersion && isNewerVersion(inventory.latestBrewVersion, *inventory.brewVersion))
        version += tr("\n%1 is available").arg(*inventory.latestBrewVersion);
    m_brewVersion->setText(version);
    if (inventory.needsXcodeSetup && m_isReady) {
        m_isReady = false;
        m_startup->showXcodeSetup();
        m_pages->setCurrentIndex(0);
    }
}

void MainWindow::showScreen(const QString &id) {
    const auto entry = std::ranges::find(screenRegistry(), id, &ScreenEntry::id);
    if (entry == screenRegistry().end())
        return;
    Screen *&screen = m_screens[id];
    if (!screen) {
        screen = entry->make(m_larkspur);
        m_screenStack->addWidget(screen);
        connect(screen, &Screen::packageRequested, this, &MainWindow::showPackage);
    }
    m_currentScreen = id;
    m_screenStack->setCurrentWidget(screen);
    m_sidebar->setCurrentScreen(id);
}

void MainWindow::showPackage(const PackageId &id) {
    showScreen(id.isCask ? QStringLiteral("casks") : QStringLiteral("formulae"));
    m_screens.value(m_currentScreen)->showPackage(id);
}

void MainWindow::showSettings() {
    auto *dialog = new SettingsDialog(
        {m_larkspur.preferences(), m_larkspur.storedPassword(), m_larkspur.kegs(), m_larkspur.tasks()}, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, this, [this] {
        if (!m_isReady)
            checkHomebrew();
    });
    dialog->open();
}

void MainWindow::closeEvent(QCloseEvent *event) {
    if (!m_larkspur.operations().unfinished().isEmpty()) {
        event->ignore();
        askBeforeClosing();
        return;
    }
    saveLayout();
    event->accept();
    Q_EMIT closed();
}

void MainWindow::askBeforeClosing() {
    auto *question = new QMessageBox(QMessageBox::Question, tr("An Operation Is Running"),
                                     tr("%1 is not finished.").arg(m_larkspur.operations().shown()->title()),
                                     QMessageBox::NoButton, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setInformativeText(tr("Stopping it now may leave the package incomplete."));
    connect(&m_larkspur.operations(), &OperationCenter::finished, question, [this, question] {
        if (m_larkspur.operations().unfinished().isEmpty())
            question->close(); // there is nothing left to decide
    });
    const QPushButton *wait = question->addButton(tr("Quit When Finished"), QMessageBox::AcceptRole);
    const QPushButton *stop = question->addButton(tr("Stop and Quit"), QMessageBox::DestructiveRole);
    question->addButton(tr("Cancel"), QMessageBox::RejectRole);
    connect(question, &QMessageBox::buttonClicked, this,
            [this, question, wait, stop](QAbstractButton *clicked) {
                m_closesWhenIdle = clicked == wait || clicked == stop;
                if (clicked == stop)
                    m_larkspur.operations().stopAll();
                question->close();
                if (m_closesWhenIdle && m_larkspur.operations().unfinished().isEmpty())
                    close();
            });
    question->open();
}

void MainWindow::changeEvent(QEvent *event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || !m_isReady)
        return;
    m_larkspur.readFilesAgain();
    if (m_larkspur.preferences().boolean(keys::refreshOnActivate))
        refresh();
}

void MainWindow::restoreLayout() {
    if (!restoreGeometry(m_larkspur.preferences().bytes(keys::windowGeometry)))
        resize(1120, 720);
    m_splitter->restoreState(m_larkspur.preferences().bytes(keys::windowLayout));
}

void MainWindow::saveLayout() {
    m_larkspur.preferences().remember(keys::windowGeometry, saveGeometry());
    m_larkspur.preferences().remember(keys::windowLayout, m_splitter->saveState());
}

} // namespace larkspur::ui
