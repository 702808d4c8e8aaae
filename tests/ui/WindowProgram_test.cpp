#include "app/LaunchOptions.h"
#include "tests/support/Fixture.h"
#include "tests/support/Processes.h"
#include "ui/WindowProgram.h"
#include "ui/authorization/PasswordSheet.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

namespace {

const char *const windowRole = "LARKSPUR_TEST_WINDOW";

template <typename Widget>
bool isShown() {
    for (const QWidget *widget : QApplication::allWidgets())
        if (qobject_cast<const Widget *>(widget) && widget->isVisible())
            return true;
    return false;
}

/// In the window's process: upgrades everything as soon as that is offered, and says what is on the screen.
void useTheWindow() {
    if (!qEnvironmentVariableIsSet(windowRole))
        return;
    auto *tick = new QTimer(QCoreApplication::instance());
    QObject::connect(tick, &QTimer::timeout, tick, [hasClicked = false]() mutable {
        for (QWidget *widget : QApplication::allWidgets())
            if (auto *button = qobject_cast<QPushButton *>(widget);
                button && button->text() == "Upgrade All" && button->isVisible() && button->isEnabled() &&
                !std::exchange(hasClicked, true))
                button->click();
        std::puts(isShown<ui::PasswordSheet>() ? "asks for the password"
                  : isShown<QMessageBox>()     ? "asks a question"
                                               : "shows lists");
        std::fflush(stdout);
    });
    tick->start(50);
}
Q_COREAPP_STARTUP_FUNCTION(useTheWindow)

} // namespace

/// The program with its window, in a process of its own.
class WindowProgramTest : public QObject {
    Q_OBJECT

    static bool waitForText(QProcess &process, const QByteArray &text) {
        for (int i = 0; i < 200 && !process.peek(10'000'000).contains(text); ++i)
            process.waitForReadyRead(100);
        return process.peek(10'000'000).contains(text);
    }

  private Q_SLOTS:
    void aSignalStopsWhatRunsAndQuits_data() {
        QTest::addColumn<int>("signal");
        QTest::addColumn<QByteArray>("brew"); // what an upgrade does
        QTest::addColumn<QByteArray>("text"); // what is waited for
        const QByteArray hangs = "echo $$ > RUNNING; trap '' TERM; sleep 100; sleep 100";
        QTest::newRow("terminate") << SIGTERM << hangs << QByteArray();
        QTest::newRow("hang up") << SIGHUP << hangs << QByteArray();
        QTest::newRow("interrupt") << SIGINT << hangs << QByteArray();
        QTest::newRow("at the question for the password")
            << SIGTERM << QByteArray("echo 'sudo: a password is required'; exit 1")
            << QByteArray("asks for the password");
        QTest::newRow("nothing runs") << SIGTERM << QByteArray() << QByteArray("shows lists");
    }
    void aSignalStopsWhatRunsAndQuits() {
        QFETCH(int, signal);
        QFETCH(QByteArray, brew);
        QFETCH(QByteArray, text);
        const QTemporaryDir folder;
        QVERIFY(sampleEnvironment(folder.path(), true));
        QDir(folder.path()).mkdir("data");
        Fixture::write(folder.filePath("data/preferences.ini"), "[General]\nshowOperationPlan=false\n");
        const QByteArray link = folder.filePath("homebrew/bin/brew").toUtf8();
        QVERIFY(QFile::rename(link, link + "-real"));
        const QString running = folder.filePath("running");
        Fixture::write(link,
                       "#!/bin/bash\nif [ \"$1\" = upgrade ] && [ \"$2\" != --dry-run ]; then\n" +
                           (brew.isEmpty() ? "exit 0" : brew.replace("RUNNING", running.toUtf8())) +
                           "\nfi\nexec -a " + link + ' ' + link + "-real \"$@\"\n",
                       true);
        QProcess window;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(windowRole, folder.path());
        window.setProcessEnvironment(environment);
        window.start(QCoreApplication::applicationFilePath(), {});
        if (text.isEmpty())
            QTRY_VERIFY_WITH_TIMEOUT(!Fixture::read(running).isEmpty(), 20'000);
        else
            QVERIFY(waitForText(window, text));
        ::kill(static_cast<pid_t>(window.processId()), signal);
        QVERIFY(window.waitForFinished(30'000));
        QCOMPARE(window.exitStatus(), QProcess::NormalExit);
        QCOMPARE(window.exitCode(), 0);
        QVERIFY(!window.readAllStandardOutput().contains("asks a question"));
        QVERIFY(processesWith(link).isEmpty());
        QVERIFY(!QFile::exists(folder.filePath("data/operation.lock")));
    }
};

int main(int argc, char *argv[]) {
    if (qEnvironmentVariableIsSet(windowRole)) {
        LaunchOptions options;
        options.sample = true;
        options.sampleFolder = qEnvironmentVariable(windowRole);
        return ui::runWindowProgram(argc, argv, options);
    }
    const QCoreApplication application(argc, argv);
    WindowProgramTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "WindowProgram_test.moc"
