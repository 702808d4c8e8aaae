#include "app/LaunchOptions.h"
#include "cli/CommandLine.h"
#include "cli/LiveOutput.h"
#include "cli/commands/Commands.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::cli;

class CommandLineTest : public QObject {
    Q_OBJECT

    static LaunchOptions launch(QList<QByteArray> words) {
        words.prepend("larkspur");
        QList<char *> pointers;
        for (QByteArray &word : words)
            pointers.append(word.data());
        return parseLaunchOptions(static_cast<int>(pointers.size()), pointers.data());
    }

  private Q_SLOTS:
    void launchOptions() {
        QVERIFY(launch({}).wantsWindow() && !launch({}).sample);
        QVERIFY(launch({"--sample", "--fresh"}).wantsWindow());
        const LaunchOptions command = launch({"--sample-folder=/tmp/a b", "list", "--sample", "x"});
        QVERIFY(command.sample && !command.fresh);
        QCOMPARE(command.sampleFolder, "/tmp/a b");
        QCOMPARE(command.commandWords, QStringList({"list", "--sample", "x"})); // the command's own words
        QCOMPARE(launch({"--help"}).commandWords, QStringList{"--help"});
    }

    void everyCommandExplainsItself() {
        const CommandRegistry registry;
        QSet<QString> names;
        for (const auto &command : makeCommands()) {
            const CommandShape shape = command->shape();
            QVERIFY2(!names.contains(shape.name), qPrintable(shape.name));
            names.insert(shape.name);
            QVERIFY2(shape.summary.endsWith('.'), qPrintable(shape.name));
            QVERIFY(registry.overview().contains("  " + shape.name + " "));
            QVERIFY(registry.help(*command).startsWith("Usage: larkspur " + shape.name));
            for (const QString &option : shape.options)
                QVERIFY2(shape.synopsis.contains(option), qPrintable(shape.name + " " + option));
            for (auto verb = shape.verbs.begin(); verb != shape.verbs.end(); ++verb)
                for (const QString &word : QStringList(verb.key()) + verb.value())
                    QVERIFY2(shape.synopsis.contains(word), qPrintable(shape.name + " " + word));
        }
        QVERIFY(names.contains("upgrade"));
        QVERIFY(registry.help(*registry.find("deps")).contains("(see above)"));
    }

    void nearestCommand_data() {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("nearest"); // empty: none is near
        QTest::newRow("one letter") << "upgrad" << "upgrade";
        QTest::newRow("swapped") << "lsit" << "list";
        QTest::newRow("plural") << "service" << "services";
        QTest::newRow("far") << "frobnicate" << "";
        QTest::newRow("short") << "x" << "";
    }
    void nearestCommand() {
        QFETCH(QString, word);
        const CommandRegistry registry;
        const Command *near = registry.nearest(word);
        QTEST(near ? near->shape().name : QString(), "nearest");
    }

    void progressBars_data() {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("bar");
        QTest::newRow("nothing known") << QStringList{"x"} << 80 << "working…";
        QTest::newRow("item only") << QStringList{"==> Upgrading heron"} << 80 << "heron…";
        QTest::newRow("half") << QStringList{"==> Upgrading heron", "50%"} << 35
                              << "heron  [##########----------]  50%";
        QTest::newRow("full in a narrow place")
            << QStringList{"==> Upgrading heron", "100%"} << 10 << "heron  [##########]  100%";
    }
    void progressBars() {
        QFETCH(QStringList, lines);
        QFETCH(int, width);
        OperationProgress progress;
        progress.apply({0, lines, false});
        QTEST(progressBar(progress, width), "bar");
    }

    void exitStatuses() {
        QCOMPARE(static_cast<int>(statusFor(BrewError::brewNotInstalled())), 4);
        QCOMPARE(static_cast<int>(statusFor(BrewError::timeout("x"))), 1);
        QCOMPARE(static_cast<int>(statusFor(OperationOutcome::CompletedWithWarnings)), 3);
        QCOMPARE(static_cast<int>(statusFor(OperationOutcome::Succeeded)), 0);
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)
#include "CommandLine_test.moc"
