#include "app/Larkspur.h"
#include "operations/kegs/RollBackKegs.h"
#include "operations/packages/InstallPackages.h"
#include "operations/packages/UpgradePackages.h"
#include "operations/snapshots/RestorePlan.h"
#include "tests/support/Await.h"
#include "ui/MainWindow.h"
#include "ui/Screen.h"
#include "ui/ScreenRegistry.h"
#include "ui/authorization/PasswordSheet.h"
#include "ui/operation/FollowUpBar.h"
#include "ui/operation/OperationPanel.h"
#include "ui/operation/PlanSheet.h"
#include "ui/operation/RunInTerminal.h"
#include "ui/settings/SettingsDialog.h"
#include "ui/timemachine/CompareSheet.h"
#include "ui/timemachine/RestoreSheet.h"
#include "ui/widgets/LinkLabel.h"
#include "ui/widgets/PackageActions.h"
#include "ui/widgets/PackageTable.h"
#include "ui/widgets/PlainText.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QHelpEvent>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QToolTip>

#ifdef __linux__
#include <sys/inotify.h>
#endif
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

namespace {

/// Tells whether anybody has opened a file; where the system has no such watch, that nobody has.
class OpenWatch {
  public:
    explicit OpenWatch(const QString &path) {
#ifdef __linux__
        ::inotify_add_watch(m_queue, path.toUtf8().constData(), IN_OPEN);
#else
        Q_UNUSED(path)
#endif
    }
    bool wasOpened() const {
        char event[4096];
        return m_queue >= 0 && ::read(m_queue, event, sizeof event) > 0;
    }

  private:
#ifdef __linux__
    int m_queue = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
#else
    int m_queue = -1;
#endif
};

/// What a recipe could put into one of its fields: markup, a picture, entities, a shortcut, turned
/// directions, and a second line.
QString hostile(const QString &field) {
    return "<b>" + field + u"<img src=picture.png>&amp;&x\u202E\u200F\ttab\nline"_qs;
}

Formula hostileFormula(const QString &name, const QStringList &dependencies) {
    Formula formula;
    formula.name = formula.fullName = name;
    formula.version = hostile("formula.version");
    formula.description = hostile("formula.description");
    formula.homepage = "https://example.com/" + hostile("formula.homepage");
    formula.sourceURL = "javascript:" + hostile("formula.source");
    formula.dependencies = dependencies;
    formula.caveats = hostile("formula.caveats");
    formula.license = hostile("formula.license");
    return formula;
}

Cask hostileCask() {
    Cask cask;
    cask.token = hostile("cask.token");
    cask.name = {hostile("cask.name"), hostile("cask.other name")};
    cask.version = hostile("cask.version");
    cask.description = hostile("cask.description");
    cask.homepage = hostile("cask.homepage");
    cask.url = "file:///" + hostile("cask.url");
    cask.caveats = hostile("cask.caveats");
    cask.appNames = {hostile("cask.application")};
    cask.actualVersion = hostile("cask.actual version");
    cask.actualBuild = hostile("cask.actual build");
    return cask;
}

void makeHostile(Inventory &inventory) {
    const QString name = hostile("formula.name");
    inventory.brewVersion = "1" + hostile("brew version");
    inventory.latestBrewVersion = "9" + hostile("latest brew version");
    inventory.brewPrefix = hostile("prefix");
    inventory.installedFormulae = {hostileFormula(name, {hostile("dependency")}),
                                   hostileFormula(hostile("dependent"), {name})};
    inventory.installedCasks = {hostileCask()};
    inventory.outdatedPackages = {
        {name, name, false, {hostile("old version")}, hostile("new version"), false},
        {hostile("outdated cask"), hostile("outdated cask"), true, {hostile("old cask version")}, "2", false},
        {hostile("cask.token"), hostile("cask.token"), true, {"1"}, "2", false}};
    inventory.pinnedPackages = {name};
    inventory.hiddenUntrustedTaps = {{hostile("hidden tap"), {hostile("hidden package")}}};
    inventory.services = {
        {hostile("service"), ServiceStatus::Error, hostile("service.user"), hostile("service.file"), 3}};
    TapInfo tap;
    tap.name = hostile("tap.name");
    tap.remote = hostile("tap.remote");
    inventory.taps = {tap};
}

/// All fields above that some screen shows.
const QStringList shownFields{"formula.name",
                              "formula.version",
                              "formula.description",
                              "formula.homepage",
                              "formula.source",
                              "formula.caveats",
                              "formula.license",
                              "dependency",
                              "dependent",
                              "cask.token",
                              "cask.name",
                              "cask.other name",
                              "cask.version",
                              "cask.description",
                              "cask.homepage",
                              "cask.url",
                              "cask.caveats",
                              "cask.application",
                              "cask.actual version",
                              "cask.actual build",
                              "brew version",
                              "latest brew version",
                              "new version",
                              "outdated cask",
                              "old cask version",
                              "hidden tap",
                              "hidden package",
                              "service",
                              "service.user",
                              "service.file",
                              "tap.name",
                              "tap.remote",
                              "history",
                              "note",
                              "unreadable",
                              "snapshot.formula",
                              "snapshot.tap",
                              "keg version",
                              "failed package",
                              "output",
                              "planned package",
                              "command",
                              "reason",
                              "finished"};

Task<> askForPassword(SudoAuth *auth, StopToken stop) {
    co_await auth->requestPassword({.reason = hostile("reason"),
                                    .package = hostile("package"),
                                    .command = hostile("command"),
                                    .trigger = hostile("trigger")},
                                   stop);
}

} // namespace

/// The window on an inventory, files and a Homebrew whose every text tries to be drawn as markup.
class HostileTextTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    std::unique_ptr<Larkspur> m_larkspur;
    std::unique_ptr<ui::MainWindow> m_window;
    QString m_seen;         ///< every text that was shown
    QStringList m_problems; ///< what was not shown as it is
    int m_tips = 0;
    std::unique_ptr<OpenWatch> m_picture;

    void note(const QString &text, const char *problem) {
        m_problems.append(QString("%1: %2").arg(problem, text.left(60)));
    }
    void inspectDocument(const QTextDocument &document, const QLabel *label) {
        QString text = document.toPlainText();
        m_seen += text.remove(QChar(0x200B)) + '\n';
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
            for (auto part = block.begin(); part != block.end(); ++part) {
                const QTextCharFormat format = part.fragment().charFormat();
                const QUrl target(format.anchorHref());
                if (format.isImageFormat() || (label && format.fontWeight() > QFont::Normal))
                    note(text, "markup was obeyed");
                if (!target.isEmpty() && label && label->openExternalLinks() &&
                    !target.scheme().startsWith("http"))
                    note(text, "what is not the web's can be opened");
            }
    }
    void inspectCaption(const QString &text) {
        m_seen += QString(text).replace("&&", "&") + '\n';
        if (text.contains("<img") && (!QKeySequence::mnemonic(text).isEmpty() || text.contains('\t')))
            note(text, "the caption has a foreign shortcut");
    }
    /// Every widget of the process that is shown now.
    void inspect() {
        for (QWidget *widget : QApplication::allWidgets()) {
            if (!widget->isVisible())
                continue;
            const auto *label = qobject_cast<QLabel *>(widget);
            if (label || qobject_cast<QPlainTextEdit *>(widget) || qobject_cast<QTextEdit *>(widget))
                for (const QTextDocument *document : widget->findChildren<QTextDocument *>())
                    inspectDocument(*document, label);
            if (label) {
                if (label->textFormat() != Qt::PlainText && !qobject_cast<const ui::LinkLabel *>(label))
                    note(label->text(), "a label is not plain");
                m_seen += label->text() + '\n';
            }
            if (const auto *button = qobject_cast<QAbstractButton *>(widget))
                inspectCaption(button->text());
            for (const QAction *action : widget->actions())
                inspectCaption(action->text());
        }
    }
    void hover(QWidget *widget, QPoint position) {
        QHelpEvent event(QEvent::ToolTip, position, widget->mapToGlobal(position));
        QApplication::sendEvent(widget, &event);
        for (const QWidget *top : QApplication::topLevelWidgets())
            if (const auto *tip = qobject_cast<const QLabel *>(top);
                tip && tip->inherits("QTipLabel") && tip->isVisible()) {
                m_tips += tip->text().contains("<img") ? 1 : 0;
                if (tip->textFormat() != Qt::PlainText)
                    note(tip->text(), "a tool tip is not plain");
            }
    }
    void hoverOverRows(QAbstractItemView *view, const QModelIndex &parent = {}) {
        for (int row = 0; row < view->model()->rowCount(parent); ++row)
            for (int column = 0; column < view->model()->columnCount(parent); ++column) {
                const QModelIndex index = view->model()->index(row, column, parent);
                m_seen += index.data().toString() + '\n' + index.data(Qt::ToolTipRole).toString() + '\n';
                view->scrollTo(index);
                hover(view->viewport(), view->visualRect(index).center());
                hoverOverRows(view, index);
            }
    }
    /// Draws it, rests the pointer on everything, and looks at what came of it.
    void visit(QWidget *widget) {
        QVERIFY(spinUntil([&] { return widget->isVisible() && m_larkspur->tasks().isDrained(); }));
        QVERIFY(!widget->grab().isNull());
        for (QAbstractItemView *view : widget->findChildren<QAbstractItemView *>())
            if (view->isVisible())
                hoverOverRows(view);
        for (QLabel *label : widget->findChildren<QLabel *>())
            if (label->isVisible())
                hover(label, label->rect().center());
        inspect();
        QToolTip::hideText();
    }
    /// Shows a sheet, looks at it, and closes it.
    void visitSheet(QDialog *sheet) {
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->open();
        visit(sheet);
        sheet->close();
    }
    void visitMessageBox() {
        auto *box = m_window->findChild<QMessageBox *>();
        QVERIFY(box);
        visit(box);
        delete box;
    }

    void writeHostileFiles() const {
        const Locations &places = m_larkspur->locations();
        const auto write = [](const QString &path, const QByteArray &text) {
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
                qFatal("%s cannot be written", qPrintable(path));
        };
        QDir().mkpath(places.snapshots());
        QDir().mkpath(places.preservedKegs());
        for (int day = 1; day < 3; ++day) {
            Snapshot snapshot{QUuid::createUuid(), QDateTime(QDate(2026, 1, day), QTime(12, 0), Qt::UTC)};
            // Refused when it is read, and shown as that.
            snapshot.formulae = {{hostile("snapshot.formula"), QString::number(day), false},
                                 {"plain", QString::number(day), false}};
            snapshot.taps = {hostile("snapshot.tap")};
            snapshot.note = hostile("note");
            write(places.snapshots() + '/' + snapshot.id.toString(QUuid::WithoutBraces).toUpper() + ".json",
                  snapshotText(snapshot));
        }
        write(places.snapshots() + '/' + hostile("unreadable") + ".json", "x");
        const QDateTime now = QDateTime::currentDateTimeUtc();
        write(places.preservedKegs() + "/index.json",
              kegIndexText({{hostile("keg"), hostile("keg version"), 1, now},
                            {hostile("formula.name"), hostile("keg version"), 1, now}}));
    }
    ui::PackageActions::Services services() const {
        return {m_larkspur->operations(), m_larkspur->packages(),    m_larkspur->kegs(),
                m_larkspur->userData(),   m_larkspur->preferences(), m_larkspur->tasks()};
    }
    void feed() const { m_larkspur->inventory().update(makeHostile); }

  private Q_SLOTS:
    void initTestCase() {
        QImage picture(40, 40, QImage::Format_RGB32);
        QVERIFY(QDir::setCurrent(m_folder.path()) && picture.save("picture.png"));
        m_picture = std::make_unique<OpenWatch>("picture.png");
        auto environment = sampleEnvironment(m_folder.path(), false);
        QVERIFY(environment);
        m_larkspur = std::make_unique<Larkspur>(std::move(*environment));
        writeHostileFiles();
        m_window = std::make_unique<ui::MainWindow>(*m_larkspur);
        m_window->show();
        m_window->start();
        QVERIFY(spinUntil([&] {
            const Inventory &inventory = m_larkspur->inventory().value();
            return inventory.hasEnrichedCaskVersions && !inventory.isRefreshing &&
                   m_larkspur->tasks().isDrained();
        }));
        await(m_larkspur->snapshots().load());
        await(m_larkspur->kegs().reload());
        m_larkspur->userData().addHistoryEntry(HistoryAction::Upgrade, hostile("history"), false, true);
        m_larkspur->userData().snoozePackage(hostile("cask.token"), "2", true, UntilNextVersion());
    }
    void cleanupTestCase() {
        m_larkspur->shutDown();
        QVERIFY(spinUntil([&] { return m_larkspur->tasks().isDrained(); }));
        m_window.reset();
        QDir::setCurrent("/");
    }

    void operations() {
        const QString brew = m_folder.filePath("homebrew/bin/brew");
        QVERIFY(QFile::rename(brew, brew + "-real"));
        QFile script(brew);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/bash\nif [ \"$1\" = install ]; then echo 'Error: " + hostile("output").toUtf8() +
                     "'; exit 1; fi\nexec -a " + brew.toUtf8() + ' ' + brew.toUtf8() + "-real \"$@\"\n");
        script.close();
        script.setPermissions(script.permissions() | QFile::ExeOwner | QFile::ExeUser);
        for (const QString &name : {QString("dovetail"), hostile("failed package")}) {
            const OperationRun *run =
                m_larkspur->operations().start(installPackages(m_larkspur->packages(), {{name}}));
            QVERIFY(spinUntil([&] { return !run->isRunning() && m_larkspur->tasks().isDrained(); }));
            QTest::qWait(100); // the output is drawn at its own pace
            visit(m_window->findChild<ui::OperationPanel *>());
        }
    }

    void screens() {
        feed();
        for (const ui::ScreenEntry &entry : ui::screenRegistry()) {
            m_window->showScreen(entry.id);
            ui::Screen *screen = nullptr;
            for (ui::Screen *one : m_window->findChildren<ui::Screen *>())
                screen = one->isVisible() ? one : screen;
            QVERIFY(screen);
            visit(screen);
            for (auto *table : screen->findChildren<ui::PackageTable *>())
                for (int row = 0; row < table->model().rowCount(); ++row) {
                    table->select(table->model().row(row).id);
                    visit(screen);
                }
            for (auto *view : screen->findChildren<QTableView *>())
                if (view->isVisible() && view->model()->rowCount() > 0)
                    view->selectRow(0);
            visit(screen);
        }
        QVERIFY(m_tips > 5);
    }

    void sheets() {
        feed();
        const QList<Snapshot> &snapshots = m_larkspur->snapshots().snapshots();
        QCOMPARE(snapshots.size(), 2);
        visitSheet(new ui::PlanSheet({m_larkspur->preferences(), m_larkspur->tasks()},
                                     upgradePackages(m_larkspur->packages(), {{hostile("planned package")}}),
                                     m_window.get()));
        auto *compare = new ui::CompareSheet(snapshots, m_window.get());
        compare->choose(0, 1);
        visitSheet(compare);
        Snapshot nothing{QUuid::createUuid(), QDateTime::currentDateTimeUtc()};
        visitSheet(new ui::RestoreSheet(
            snapshots.first(), planRestore(snapshots.first(), nothing, m_larkspur->kegs()), m_window.get()));
        auto *settings = new ui::SettingsDialog({m_larkspur->preferences(), m_larkspur->storedPassword(),
                                                 m_larkspur->kegs(), m_larkspur->tasks()},
                                                m_window.get());
        settings->findChild<QTabWidget *>()->setCurrentIndex(2);
        visitSheet(settings);
        StopSource stop;
        m_larkspur->tasks().spawn("test", askForPassword(&m_larkspur->sudoAuth(), stop.get_token()));
        auto *password = m_window->findChild<ui::PasswordSheet *>();
        QVERIFY(spinUntil([&] { return password->isVisible(); }));
        inspect();
        stop.request_stop();
    }

    void messageBoxesAndMenus() {
        feed();
        ui::PackageActions actions(services());
        const auto rows = ui::packageRows(m_larkspur->inventory().value(), m_larkspur->userData(),
                                          ui::PackageSelection::Everything);
        actions.rollBack(rows.first(), hostile("keg version"), m_window.get());
        visitMessageBox();
        ui::runInTerminal(hostile("command"), m_window.get());
        visitMessageBox();
        for (const ui::PackageRow &row : rows) {
            QMenu menu;
            actions.fillMenu(&menu, {row}, m_window.get());
            menu.popup({});
            visit(&menu);
        }
    }

    void followUps() {
        feed();
        const PackageTarget formula{hostile("formula.name"), false, hostile("old version"), "1"};
        OperationRun run(rollBackKegs(m_larkspur->packages(), {formula}));
        run.finish({.packages = {{formula, PackageEnd::Done, Deed::RolledBack}},
                    .servicesToRestart = {hostile("finished")}});
        ui::FollowUpBar bar({m_larkspur->operations(), m_larkspur->packages(), m_larkspur->inventory(),
                             m_larkspur->kegs(), m_larkspur->userData()});
        bar.follow(&run);
        bar.show();
        visit(&bar);
    }

    void cleanup() {
        if (m_picture->wasOpened())
            m_problems.prepend("the picture was opened");
        const QString problems = m_problems.join(" | ");
        m_problems.clear();
        QCOMPARE(problems, QString());
    }

    void nothingWasLeftOut() {
        for (const QString &field : shownFields)
            QVERIFY2(m_seen.contains("<b>" + field + "<img"), qPrintable(field));
    }
};

QTEST_MAIN(HostileTextTest)
#include "HostileText_test.moc"
