#include "operations/CrashRecovery.h"
#include "operations/package/MovedAside.h"
#include "tests/support/OperationWorld.h"

#include <QDir>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// What a program that died leaves behind, and what the next one does about it.
class CrashRecoveryTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        QString home = folder.path();
        QString script = home + "/Library/Homebrew/cask/utils/copy-xattrs.swift";
        QString app = path("apps/x.app");

        World() {
            // brew lies at PREFIX/bin/brew
            QDir().mkpath(path("bin"));
            write(path("bin/brew"), "#!/bin/sh\n", true);
            preferences.set(keys::brewPathOverride, path("bin/brew"));
            QDir().mkpath(QFileInfo(script).path());
            write(script, "import Foundation\nexit(0)\n");
            write(script + ".larkspur-backup", "original");
            write(path(".secret"), "sesame\n");
            QDir().mkpath(path("apps/.larkspur-aside-x.app/Contents"));
            write(path("moved-aside.json"), "[\"" + app.toUtf8() + "\"]");
            write(path("held-pin.json"), "{\"name\":\"kelp\",\"isCask\":false}");
            shell.answer("pin kelp", {});
        }
        void recover() {
            CrashRecovery recovery({.resolver = resolver,
                                    .brew = brew,
                                    .askpass = askpass,
                                    .kegs = kegs,
                                    .rollback = rollback,
                                    .movedAsideNote = path("moved-aside.json"),
                                    .heldPinNote = path("held-pin.json"),
                                    .logger = logger});
            await(recovery.run());
        }
    };

  private Q_SLOTS:
    void everythingIsPutRight() {
        World world;
        world.recover();
        QCOMPARE(Fixture::read(world.script), "original");
        QVERIFY(!QFile::exists(world.script + ".larkspur-backup"));
        QVERIFY(!world.askpass.hasLeftover());
        QVERIFY(QDir(world.app + "/Contents").exists());
        QVERIFY(!QFile::exists(world.path("moved-aside.json")));
        QVERIFY(world.logText().contains("put copy-xattrs back"));
        QVERIFY(world.shell.commandLines().contains("pin kelp"));
        QVERIFY(!QFile::exists(world.path("held-pin.json")));
        world.recover(); // finds nothing more to do
    }

    void nothingIsTouchedWhileAnOperationLives() {
        World world;
        OperationLock other(world.path("operation.lock"), world.logger);
        const auto held = await(other.acquire({}, {}));
        world.recover();
        QVERIFY(world.askpass.hasLeftover());
        QVERIFY(!QFile::exists(world.app));
        QVERIFY(QFile::exists(world.path("held-pin.json")));
    }

    void aNoteOfGarbageIsDropped() {
        World world;
        Fixture::write(world.path("moved-aside.json"), "[1, \"/nowhere/y.app\", {");
        Fixture::write(world.path("held-pin.json"), "{\"name\":\"--force; kelp\"}");
        world.recover();
        QVERIFY(!QFile::exists(world.path("held-pin.json")));
        QVERIFY(world.shell.commandLines().filter("pin").isEmpty());
        QVERIFY(!QFile::exists(world.path("moved-aside.json")));
        QVERIFY(QFile::exists(world.path("apps/.larkspur-aside-x.app"))); // unknown: left alone
    }
};

QTEST_GUILESS_MAIN(CrashRecoveryTest)
#include "CrashRecovery_test.moc"
