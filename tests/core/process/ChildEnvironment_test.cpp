#include "core/process/ChildEnvironment.h"

#include <QTest>

using namespace larkspur;

namespace {

ChildEnvironmentInputs inputs() {
    ChildEnvironmentInputs inputs;
    inputs.system.insert("PATH", "/usr/bin");
    inputs.askpassScript = "/data/larkspur-askpass.sh";
    inputs.homeFolder = "/home/lark";
    return inputs;
}

} // namespace

class ChildEnvironmentTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void searchPath() {
        const QString prefix = "/opt/homebrew/bin:/opt/homebrew/sbin:/usr/local/bin:/usr/local/sbin";
        QCOMPARE(childEnvironment(inputs(), {}).value("PATH"), prefix + ":/usr/bin");
        ChildEnvironmentInputs without = inputs();
        without.system.remove("PATH");
        QCOMPARE(childEnvironment(without, {}).value("PATH"), prefix);
    }

    void switches() {
        const auto plain = childEnvironment(inputs(), {});
        QCOMPARE(plain.value("HOMEBREW_NO_ASK"), "1");
        QCOMPARE(plain.value("HOMEBREW_NO_COLOR"), "1");
        QCOMPARE(plain.value("SUDO_ASKPASS"), "/data/larkspur-askpass.sh");
        QVERIFY(!plain.contains("HOMEBREW_NO_AUTO_UPDATE"));
        QVERIFY(!plain.contains("TERM"));
        const auto terminal =
            childEnvironment(inputs(), {.mode = RunMode::Terminal, .suppressAutoUpdate = true});
        QVERIFY(!terminal.contains("HOMEBREW_NO_COLOR"));
        QCOMPARE(terminal.value("TERM"), "xterm-256color");
        QCOMPARE(terminal.value("HOMEBREW_NO_AUTO_UPDATE"), "1");
        ChildEnvironmentInputs own = inputs();
        own.system.insert("TERM", "vt100");
        QCOMPARE(childEnvironment(own, {.mode = RunMode::Terminal}).value("TERM"), "vt100");
    }

    void caskOptions_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("existing");
        QTest::addColumn<QString>("options");
        QTest::newRow("none") << "  " << "" << "";
        QTest::newRow("home") << " ~/Apps " << "" << "--appdir=\"/home/lark/Apps\"";
        QTest::newRow("the last of two folders counts")
            << "/a" << "--appdir=/b" << "--appdir=/b --appdir=\"/a\"";
        QTest::newRow("quote") << "/a \"b\"" << "--no-quarantine"
                               << "--no-quarantine --appdir=\"/a \\\"b\\\"\"";
        QTest::newRow("backslash") << "/a\\b" << "" << "--appdir=\"/a\\\\b\"";
        QTest::newRow("a tilde inside is no home") << "/x/~y" << "" << "--appdir=\"/x/~y\"";
    }
    void caskOptions() {
        QFETCH(QString, folder);
        QFETCH(QString, existing);
        QFETCH(QString, options);
        ChildEnvironmentInputs from = inputs();
        from.customCaskAppdir = folder;
        if (!existing.isEmpty())
            from.system.insert("HOMEBREW_CASK_OPTS", existing);
        QCOMPARE(childEnvironment(from, {}).value("HOMEBREW_CASK_OPTS"), options);
    }

    void theCommandsOwnEntriesWin() {
        ChildEnvironmentInputs from = inputs();
        from.loginShell = {{"HOMEBREW_CASK_OPTS", "--fontdir=/f"}, {"HOMEBREW_EDITOR", "vi"}};
        from.customCaskAppdir = "/a";
        const auto built =
            childEnvironment(from, {.environment = {{"HOMEBREW_NO_ASK", "0"}, {"HOMEBREW_EDITOR", "ed"}}});
        QCOMPARE(built.value("HOMEBREW_NO_ASK"), "0");
        QCOMPARE(built.value("HOMEBREW_EDITOR"), "ed");
        QCOMPARE(built.value("HOMEBREW_CASK_OPTS"), "--fontdir=/f --appdir=\"/a\"");
    }

    void noPasswordIsInherited() {
        ChildEnvironmentInputs from = inputs();
        from.system.insert("LARKSPUR_ASKPASS_PASSWORD", "left over");
        QVERIFY(!childEnvironment(from, {}).contains("LARKSPUR_ASKPASS_PASSWORD"));
        // Not even a password of its own stands in it: the child itself adds that.
        QVERIFY(!childEnvironment(from, {.password = Password(QByteArray("sesame"))})
                     .contains("LARKSPUR_ASKPASS_PASSWORD"));
    }

    void loginShellVariables() {
        const auto found =
            homebrewVariables("PATH=/bin\nHOMEBREW_CASK_OPTS=--a=b c\nHOMEBREW_PREFIX=/x\nHOMEBREW_COLOR=1\n"
                              "HOMEBREW_CELLAR=/x\nHOMEBREW_EMPTY=\nXHOMEBREW_NO=1\nHOMEBREW_BROKEN\n");
        QCOMPARE(found.keys(), QStringList({"HOMEBREW_CASK_OPTS", "HOMEBREW_EMPTY"}));
        QCOMPARE(found.value("HOMEBREW_CASK_OPTS"), "--a=b c");
    }
};

QTEST_GUILESS_MAIN(ChildEnvironmentTest)
#include "ChildEnvironment_test.moc"
