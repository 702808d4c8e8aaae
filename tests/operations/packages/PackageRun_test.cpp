#include "operations/OperationCenter.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// What is tried again after a failure, and what is said about it.
class PackageRunTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        QList<PasswordRequest> asked;
        QStringList typed; ///< answers of the person, one per prompt; none left: cancelled

        World() {
            QObject::connect(&sudoAuth, &SudoAuth::changed, &sudoAuth, [this] {
                if (!sudoAuth.isPrompting() || sudoAuth.isVerifying())
                    return;
                asked.append(sudoAuth.request());
                if (typed.isEmpty())
                    sudoAuth.cancel();
                else
                    sudoAuth.proceed(Password(typed.takeFirst()));
            });
        }
        OperationRun *run(const QString &kind, const QList<PackageTarget> &targets) {
            OperationRun *started = center.start(operation(kind, targets));
            if (!spinUntil([&] { return !started->isRunning(); }))
                qFatal("the operation has not ended");
            return started;
        }
        QStringList passwords() const {
            QStringList all;
            for (const ShellCommand &command : shell.commands())
                if (command.password)
                    all.append(QString::fromUtf8(command.password->utf8()));
            return all;
        }
    };
    static constexpr const char *sudoFailure = "sudo: a password is required\nError: failed\n";

  private Q_SLOTS:
    void thePasswordIsAskedForAndTheCommandRunAgain() {
        World world;
        world.addCask("x", "1");
        world.shell.answerOnce("upgrade --cask x", sudoFailure, 1);
        world.shell.answerOnce("upgrade --cask x", "done\n", 0, [&] { world.addCask("x", "2"); });
        world.typed = {"sesame"};
        const auto *run = world.run("upgrade", {{"x", true}});
        QCOMPARE(run->outcome(), OperationOutcome::Succeeded);
        QCOMPARE(world.passwords(), QStringList{"sesame"});
        QVERIFY(run->transcript().text().contains(
            "\n\n==> This step needs administrator privileges. Retrying with your password…\n"));
        QVERIFY(!world.askpass.hasLeftover());
    }

    void theQuestionSaysWhatLedToIt() {
        World world;
        world.addCask("x", "1");
        world.shell.answerOnce("upgrade --cask x", "Error: It seems there is already an App at 'x'.\n", 1);
        world.shell.answerOnce(
            "reinstall --cask --force x",
            "==> Downloading\nsudo: a terminal is required\nsudo: a password is required\n", 1);
        world.run("upgrade", {{"x", true}});
        QCOMPARE(world.asked.size(), 1);
        QCOMPARE(world.asked[0].reason, "Larkspur needs your administrator password to finish updating x.");
        QCOMPARE(world.asked[0].package, "x");
        QCOMPARE(world.asked[0].command, "brew reinstall --cask --force x");
        QCOMPARE(world.asked[0].trigger, "sudo: a terminal is required");
        QVERIFY(!world.asked[0].isUnusual);
        world.shell.answer("install y", "pouring\nSUDO: A PASSWORD IS REQUIRED\n", 1);
        world.run("install", {{"y", false}});
        QCOMPARE(world.asked.size(), 2);
        QCOMPARE(world.asked[1].trigger, "SUDO: A PASSWORD IS REQUIRED");
        QVERIFY(world.asked[1].isUnusual);
    }

    /// What is warned of, and which package the question names.
    void formulaeNeedNoPassword() {
        World world;
        const auto question = [&](const OperationPtr &operation, const QByteArray &heading) {
            for (const char *line : {"reinstall x", "reinstall --cask x", "services restart x", "upgrade"})
                world.shell.answer(line, heading + sudoFailure, 1);
            world.asked.clear();
            OperationRun *run = world.center.start(operation);
            if (!spinUntil([run] { return !run->isRunning(); }) || world.asked.size() != 1)
                return QString("nothing is asked");
            return world.asked[0].package + (world.asked[0].isUnusual ? " unusual" : "");
        };
        const OperationPtr formula = world.operation("reinstall", {{"x", false}});
        QCOMPARE(question(formula, ""), "x unusual");
        const OperationPtr cask = world.operation("reinstall", {{"x", true}});
        QCOMPARE(question(cask, ""), "x");
        QCOMPARE(question(cask, "==> Installing Cask x\n"), "x");
        QCOMPARE(question(cask, "==> Pouring lib--1.0.bottle.tar.gz\n"), "lib unusual"); // it needs lib
        QCOMPARE(question(restartServices(world.packages, {"x"}), ""), "x"); // which may be root's
        const OperationPtr all = world.operation("upgrade all", {{"x", false}, {"y", true}});
        QCOMPARE(question(all, ""), " unusual"); // whatever that is
        QCOMPARE(question(all, "==> Upgrading y\n==> Upgrading 2 packages:\n"), "y");
        QCOMPARE(question(all, "==> Upgrading y\n==> Upgrading x\n"), "x unusual");
    }

    void aRejectedPasswordIsAskedForAgain() {
        World world;
        world.addCask("x", "1");
        world.shell.answerOnce("upgrade --cask x", sudoFailure, 1);
        world.shell.answerOnce("upgrade --cask x", "Sorry, try again.\nError: failed\n", 1);
        world.shell.answerOnce("upgrade --cask x", "done\n", 0, [&] { world.addCask("x", "2"); });
        world.typed = {"sesame", "sesame"};
        const auto *run = world.run("upgrade", {{"x", true}});
        QCOMPARE(run->outcome(), OperationOutcome::Succeeded);
        QVERIFY(run->transcript().text().contains("\n\n==> That password didn't work. Retrying…\n"));
        QCOMPARE(world.passwords().size(), 2);
    }

    void fiveRejectedPasswordsAreTheEnd() {
        World world;
        world.shell.answer("uninstall --cask x", sudoFailure, 1);
        for (int i = 0; i < 9; ++i)
            world.typed.append(QString::fromLatin1("sesame"));
        const auto *run = world.run("uninstall", {{"x", true}});
        QCOMPARE(run->outcome(), OperationOutcome::Failed);
        QCOMPARE(world.passwords().size(), 5);
        QVERIFY(run->transcript().text().contains("==> Error: sudo has rejected 5 passwords."));
    }

    void cancellingIsNoSuccess_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("line");
        QTest::newRow("update")
            << "upgrade"
            << "==> Administrator authorization is required to update x and was cancelled. "
               "No changes were made.";
        QTest::newRow("other") << "uninstall"
                               << "==> Administrator authorization was cancelled. The operation may be "
                                  "incomplete.";
    }
    void cancellingIsNoSuccess() {
        QFETCH(QString, kind);
        QFETCH(QString, line);
        World world;
        world.shell.answer("upgrade --cask x", sudoFailure, 1);
        world.shell.answer("uninstall --cask x", sudoFailure, 1);
        const auto *run = world.run(kind, {{"x", true}});
        QCOMPARE(run->transcript().lines().last(), line);
        QVERIFY(run->wasCancelled());
        QCOMPARE(run->outcome(), OperationOutcome::Failed);
    }

    void aFailureBeforeARetryIsNotForgotten() {
        World world;
        world.shell.answer("uninstall a", "Error: needed\n", 1);
        world.shell.answerOnce("uninstall --cask b", sudoFailure, 1);
        world.shell.answerOnce("uninstall --cask b", {}, 0);
        world.typed = {"sesame"};
        const auto *run = world.run("uninstall", {{"a", false}, {"b", true}});
        QCOMPARE(run->outcome(), OperationOutcome::Failed);
        QCOMPARE(run->report().count(PackageEnd::Done), 1);
        QCOMPARE(run->transcript().lines().last(), "==> 1 of 2 packages are done. Not done: a");
    }

    void afterARunWithAPasswordNobodySaysThatNothingChanged() {
        World world;
        world.shell.answer("upgrade --cask x", sudoFailure, 1);
        world.typed = {"sesame"};
        const auto *run = world.run("upgrade", {{"x", true}});
        QCOMPARE(run->transcript().lines().last(),
                 "==> Administrator authorization was cancelled. The operation may be incomplete.");
    }

    void afterAReinstallationNobodySaysThatNothingChanged() {
        World world;
        world.preferences.set(keys::useReinstallForCasks, true);
        world.addCask("x", "1");
        world.shell.answerOnce("reinstall --cask x", sudoFailure, 1, [&] { world.remove("Caskroom/x"); });
        const auto *run = world.run("upgrade", {{"x", true}});
        QVERIFY(run->transcript().lines().contains(
            "==> Administrator authorization was cancelled. The operation may be incomplete."));
        QVERIFY(!run->transcript().text().contains("No changes"));
    }

    void aWarningBeforeARetryIsNotForgotten() {
        World world;
        world.shell.answerOnce("uninstall --cask b", "Warning: odd\n" + QByteArray(sudoFailure), 1);
        world.shell.answerOnce("uninstall --cask b", {}, 0);
        world.typed = {"sesame"};
        const auto *run = world.run("uninstall", {{"b", true}});
        QCOMPARE(run->outcome(), OperationOutcome::CompletedWithWarnings);
    }

    void whoDeclinesIsAskedOnce() {
        World world;
        world.shell.answer("uninstall --cask a", sudoFailure, 1);
        world.shell.answer("uninstall --cask b", sudoFailure, 1);
        world.shell.answer("uninstall --cask c", {}, 0);
        const auto *run = world.run("uninstall", {{"a", true}, {"b", true}, {"c", true}});
        QCOMPARE(run->report().tally(), "1 done, 2 cancelled");
        QVERIFY(!run->wasCancelled()); // something has come of it
        QCOMPARE(world.asked.size(), 1);
    }

    void forcedRetries_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("command");
        const QString removed =
            "==> x was removed outside Homebrew, but Homebrew still lists it as installed. "
            "Retrying with --force…";
        const QString older = "==> An older copy of x is blocking the update. Retrying with --force…";
        const QString missing = "Error: x: It seems the App source '%1' is not there.\n";
        QTest::newRow("update, in the Caskroom")
            << "upgrade" << missing.arg("/p/Caskroom/x/1/x.app") << removed << "reinstall --cask --force x";
        QTest::newRow("removal, in the Caskroom")
            << "uninstall" << missing.arg("/p/Caskroom/x/1/x.app") << removed << "uninstall --cask --force x";
        QTest::newRow("update, at its own place")
            << "upgrade" << missing.arg("APP") << removed << "reinstall --cask --force x";
        QTest::newRow("older copy") << "upgrade"
                                    << "Error: x: It seems there is already an App at '/a/x.app'.\n"
                                    << older << "reinstall --cask --force x";
        QTest::newRow("older copy at a removal")
            << "uninstall" << "Error: It seems there is already an App at 'x'.\n"
            << ""
            << "";
        QTest::newRow("elsewhere") << "upgrade" << missing.arg("/tmp/y.app") << "" << "";
        QTest::newRow("split over lines") << "upgrade" << "Error: source '\n/p/Caskroom/x is not there\n"
                                          << "" << "";
    }
    void forcedRetries() {
        QFETCH(QString, kind);
        QFETCH(QString, output);
        QFETCH(QString, line);
        QFETCH(QString, command);
        World world;
        const QString app = world.addCask("x", "1");
        QDir(app).removeRecursively();
        const QString first = kind == "upgrade" ? "upgrade --cask x" : "uninstall --cask x";
        world.shell.answerOnce(first, output.replace("APP", app).toUtf8(), 1);
        if (!command.isEmpty())
            world.shell.answerOnce(command, "done\n", 0, [&] {
                world.remove("Caskroom/x");
                if (kind == "upgrade")
                    world.addCask("x", "2");
            });
        const auto *run = world.run(kind, {{"x", true}});
        QCOMPARE(run->outcome(), command.isEmpty() ? OperationOutcome::Failed : OperationOutcome::Succeeded);
        QCOMPARE(world.changes().size(), command.isEmpty() ? 1 : 2);
        if (!line.isEmpty())
            QVERIFY(run->transcript().lines().contains(line));
    }

    void whatStandsAsideWasNotRemoved() {
        World world;
        world.preferences.set(keys::useReinstallForCasks, true);
        const QString app = world.addCask("x", "1");
        const QString line = "Error: x: It seems the App source '" + app + "' is not there.\n";
        world.shell.answerOnce("reinstall --cask x", line.toUtf8(), 1);
        QCOMPARE(world.run("upgrade", {{"x", true}})->outcome(), OperationOutcome::Failed);
        QCOMPARE(world.changes().size(), 1); // nothing was forced
        QVERIFY(QFile::exists(app));
    }

    void forceIsTriedOnce() {
        World world;
        world.addCask("x", "1");
        const QByteArray blocked = "Error: It seems there is already an App at 'x'.\n";
        world.shell.answerOnce("upgrade --cask x", blocked, 1);
        world.shell.answerOnce("reinstall --cask --force x", blocked, 1);
        world.shell.answer("reinstall --cask --force x", {});
        QCOMPARE(world.run("upgrade", {{"x", true}})->outcome(), OperationOutcome::Failed);
        QCOMPARE(world.changes(), QStringList({"upgrade --cask x", "reinstall --cask --force x"}));
    }

    void theApplicationSurvivesAFailedReinstallation() {
        World world;
        const QString app = world.addCask("x", "1");
        Fixture::write(app + "/Contents/data", "precious");
        world.shell.answerOnce("upgrade --cask x", "Error: It seems there is already an App at 'x'.\n", 1);
        world.shell.answerOnce("reinstall --cask --force x", "Error: no network\n", 1, [&] {
            QVERIFY(!QFile::exists(app));
            world.remove("Caskroom/x"); // Homebrew has removed it by then
        });
        const auto *run = world.run("upgrade", {{"x", true}});
        QCOMPARE(run->outcome(), OperationOutcome::Failed);
        QCOMPARE(Fixture::read(app + "/Contents/data"), "precious");
        QVERIFY(run->transcript().text().contains("==> Put " + app + " back as it was before."));
        QVERIFY(run->transcript().text().contains(
            "==> Warning: Homebrew no longer lists x; “brew install --cask --adopt x” brings it back."));
        QCOMPARE(QDir(world.path("apps")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{"x.app"});
        QVERIFY(world.notes().isEmpty());
    }

    /// Homebrew forgets the cask in the first attempt; each of the others can destroy the application all the
    /// same.
    void theApplicationSurvivesEveryAttempt() {
        World world;
        world.preferences.set(keys::useReinstallForCasks, true);
        const QString app = world.addCask("x", "1");
        Fixture::write(app + "/Contents/data", "precious");
        const auto placeHalf = [&] {
            QVERIFY(!QFile::exists(app)); // free, as Homebrew expects it
            QCOMPARE(world.notes().size(), 1);
            world.remove("Caskroom/x");
            QDir().mkpath(app + "/Contents");
            Fixture::write(app + "/Contents/data", "half");
        };
        world.shell.answerOnce("reinstall --cask x", sudoFailure, 1, placeHalf);
        world.shell.answerOnce("reinstall --cask x", "Error: It seems there is already an App at 'x'.\n", 1,
                               placeHalf);
        world.shell.answerOnce("reinstall --cask --force x", sudoFailure, 1, placeHalf);
        world.typed = {"sesame"};
        const auto *run = world.run("upgrade", {{"x", true}});
        QCOMPARE(world.changes().size(), 3);
        QCOMPARE(world.passwords(), QStringList({"sesame", "sesame"})); // the forced one has it too
        QCOMPARE(world.asked.size(), 2);
        QVERIFY(run->wasCancelled());
        QCOMPARE(Fixture::read(app + "/Contents/data"), "precious");
        QCOMPARE(run->transcript().text().count("Put " + app + " back as it was before."), 1);
        QVERIFY(run->transcript().text().contains("Homebrew no longer lists x"));
        QVERIFY(world.notes().isEmpty());
    }

    void aReinstallationThatOnlyReportsSuccessHasFailed_data() {
        QTest::addColumn<QString>("does");
        QTest::addColumn<QString>("flaw");
        QTest::newRow("nothing") << "nothing" << "there";
        QTest::newRow("removes the cask") << "removes" << "there";
        QTest::newRow("leaves a half") << "half" << "whole";
    }
    void aReinstallationThatOnlyReportsSuccessHasFailed() {
        QFETCH(QString, does);
        QFETCH(QString, flaw);
        World world;
        const QString app = world.addCask("x", "1");
        Fixture::write(app + "/Contents/data", "precious");
        world.shell.answerOnce("reinstall --cask x", "==> Reinstalling\n", 0, [&] {
            if (does != "nothing")
                world.remove("Caskroom/x/1");
            if (does == "half")
                QDir().mkpath(app + "/Contents");
        });
        const auto *run = world.run("reinstall", {{"x", true}});
        QCOMPARE(run->report().count(PackageEnd::Failed), 1);
        QCOMPARE(Fixture::read(app + "/Contents/data"), "precious");
        const QString line = "==> Error: Homebrew reported success, but " + app + " is not " + flaw +
                             "; the application from before is back";
        QVERIFY2(run->transcript().lines().contains(line), qPrintable(run->transcript().text()));
        QVERIFY(run->report().packages.first().lines.contains(line));
        QVERIFY(world.notes().isEmpty());
    }

    void hasAWayOutOfEveryStep() {
        for (const bool inPrompt : {false, true}) {
            World world;
            world.sudoAuth.disconnect(&world.sudoAuth); // nobody answers
            world.addCask("x", "1");
            if (inPrompt)
                world.shell.answer("upgrade --cask x", sudoFailure, 1);
            else
                world.shell.hold("upgrade --cask x");
            OperationRun *run = world.center.start(world.operation("upgrade", {{"x", true}}));
            QVERIFY(spinUntil(
                [&] { return inPrompt ? world.sudoAuth.isPrompting() : world.changes().size() == 1; }));
            run->stop();
            QVERIFY(spinUntil([&] { return !run->isRunning(); }));
            QVERIFY(run->wasStopped());
            QVERIFY(!world.brew.isBrewOperationRunning() && !world.askpass.hasLeftover());
            QVERIFY(world.passwords().isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(PackageRunTest)
#include "PackageRun_test.moc"
