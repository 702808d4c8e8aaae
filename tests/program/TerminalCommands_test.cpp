#include "tests/support/Program.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using namespace larkspur::test;

/// The terminal's commands against real files of the sample Homebrew.
class TerminalCommandsTest : public QObject {
    Q_OBJECT

    Program m_program;

  private Q_SLOTS:
    void initTestCase() { QCOMPARE(m_program.run({"--fresh", "status"}).status, 0); }

    void status() {
        const auto outcome = m_program.run({"status", "--json"});
        QCOMPARE(outcome.status, 0);
        const QJsonObject status = outcome.json().object();
        QCOMPARE(status["brewVersion"].toString(), "6.0.18");
        QVERIFY(status["installedFormulae"].toInt() >= 30);
        QCOMPARE(status["hiddenUntrustedTaps"].toInt(), 1);
        QVERIFY(m_program.run({"status"}).output.contains("Packages hidden by Homebrew"));
    }

    void lists() {
        const QJsonObject all = m_program.run({"list", "--json"}).json().object();
        QVERIFY(all["formulae"].toArray().size() >= 30);
        QVERIFY(all["casks"].toArray().size() >= 10);
        const QString casks = m_program.run({"list", "--casks"}).output;
        QVERIFY(casks.contains("bluefinch (cask)") && !casks.contains("heron"));
        const QJsonObject first = m_program.run({"outdated", "--json"}).json().array().first().toObject();
        QCOMPARE(first.keys(), QStringList({"currentVersion", "fullName", "installedVersions", "isCask",
                                            "name", "pinned"}));
        QCOMPARE(m_program.run({"pinned"}).output, "kelp\n");
        QVERIFY(m_program.run({"leaves"}).output.contains("cobweb\n"));
        QVERIFY(m_program.run({"services", "--json"}).json().array().size() >= 5);
        QCOMPARE(m_program.run({"services", "meadowdb", "--json"})
                     .json()
                     .array()
                     .first()
                     .toObject()["status"]
                     .toString(),
                 "running");
        QVERIFY(m_program.run({"services", "nosuch"}).errors.contains("Could not find service"));
        QCOMPARE(m_program.run({"taps", "--json"}).json().array().size(), 4);
    }

    void looksThingsUp() {
        const QJsonObject info = m_program.run({"info", "heron", "--json"}).json().object();
        QCOMPARE(info["version"].toString(), "8.10.0");
        QCOMPARE(m_program.run({"info", "bluefinch", "--json"}).json().object()["token"].toString(),
                 "bluefinch");
        const QString deps = m_program.run({"deps", "quillmark"}).output;
        QVERIFY2(deps.contains("    ├── libmosaic"), qPrintable(deps));
        QVERIFY(m_program.run({"deps", "libember"}).output.contains("Needed by "));
        QVERIFY(m_program.run({"search", "widget"}).output.contains("widget-board (cask)"));
        QVERIFY(m_program.run({"search", "zzz"}).output.startsWith("Nothing is called like"));
        QVERIFY(m_program.run({"sizes", "--json"}).json().array().first().toObject()["bytes"].toInteger() >
                1'000'000);
    }

    void aTreeOfManyWaysStaysShort() {
        QJsonArray formulae;
        for (int layer = 0; layer <= 20; ++layer)
            for (const char *name : {"a", "b"}) {
                const QString next = QString::number(layer + 1);
                const QJsonArray needs = layer < 20 ? QJsonArray{"a" + next, "b" + next} : QJsonArray();
                formulae.append(QJsonObject{{"name", name + QString::number(layer)},
                                            {"full_name", name + QString::number(layer)},
                                            {"dependencies", needs},
                                            {"installed", QJsonArray{QJsonObject{{"version", "1"}}}}});
            }
        Program layers;
        QCOMPARE(layers.run({"status"}).status, 0);
        QFile answer(layers.path("answer.json"));
        QVERIFY(answer.open(QIODevice::WriteOnly));
        answer.write(QJsonDocument(QJsonObject{{"formulae", formulae}, {"casks", QJsonArray()}}).toJson());
        answer.close();
        layers.replaceBrew("[ \"$1\" = info ] && exec cat " + answer.fileName().toUtf8() +
                           "\nexec \"$REAL\" \"$@\"\n");
        const QString text = layers.run({"deps", "a0"}).output;
        QCOMPARE(text.count('\n'), 1 + 2 * 20 + 2 * 19);
        QVERIFY2(text.contains("├── a20\n") && text.contains("├── a19 (see above)\n"), qPrintable(text));
        const QByteArray json = layers.run({"deps", "a0", "--json"}).json().toJson(QJsonDocument::Compact);
        QCOMPARE(json.count("\"repeated\":true"), 2 * 18);
        QCOMPARE(json.count("\"id\":"), 1 + 2 * 20 + 2 * 19);
    }

    void changesPackages() {
        QCOMPARE(m_program.run({"install", "dovetail"}).status, 0);
        QVERIFY(QFile::exists(m_program.path("homebrew/bin/dovetail")));
        QCOMPARE(m_program.run({"install", "dovetail"}).status, 3); // already there: done with warnings
        QCOMPARE(m_program.run({"uninstall", "dovetail"}).status, 0);
        QVERIFY(!QFile::exists(m_program.path("homebrew/Cellar/dovetail")));
        const auto upgrade = m_program.run({"upgrade", "heron", "amberdesk"});
        QCOMPARE(upgrade.status, 0);
        QVERIFY(QDir(m_program.path("homebrew/Cellar/heron/8.11.1")).exists());
        QVERIFY(QFile::exists(m_program.path("homebrew/Caskroom/amberdesk/5.2.1")));
        const auto refused = m_program.run({"uninstall", "libtide"});
        QCOMPARE(refused.status, 1);
        QVERIFY(refused.output.contains("Refusing to uninstall"));
    }

    void pinsAndReinstalls() {
        QCOMPARE(m_program.run({"pin", "tern"}).status, 0);
        QVERIFY(m_program.run({"pinned"}).output.contains("tern"));
        QCOMPARE(m_program.run({"unpin", "tern"}).status, 0);
        QVERIFY(!m_program.run({"pinned"}).output.contains("tern"));
        QCOMPARE(m_program.run({"reinstall", "tern"}).status, 0);
        QCOMPARE(m_program.run({"reinstall", "--cask", "tidepool"}).status, 0);
        QVERIFY(QDir(m_program.path("Applications/Tidepool.app")).exists());
    }

    void aBuildThatFailsWithoutAWordIsAFailure() {
        const auto outcome = m_program.run({"upgrade", "hearthbuild"});
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.output.contains("==> Error: Homebrew ended with status 1 without naming a reason."));
        QVERIFY(outcome.errors.contains("Failed: Upgrading hearthbuild"));
        QVERIFY(QDir(m_program.path("homebrew/Cellar/hearthbuild/4.0.0")).exists());
    }

    void usage_data() {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("says");
        QTest::newRow("help") << QStringList{"help"} << 0 << "Usage: larkspur";
        QTest::newRow("help for one") << QStringList{"help", "upgrade"} << 0 << "--all";
        QTest::newRow("help as option") << QStringList{"list", "--help"} << 0 << "--formulae";
        QTest::newRow("misspelt") << QStringList{"outdatd"} << 2 << "Did you mean outdated?";
        QTest::newRow("nothing like it") << QStringList{"xyzzyplugh"} << 2 << "larkspur help";
        QTest::newRow("unknown option")
            << QStringList{"list", "--frmulae"} << 2 << "unknown option --frmulae";
        QTest::newRow("missing name") << QStringList{"info"} << 2 << "a name is missing";
        QTest::newRow("too many") << QStringList{"info", "a", "b"} << 2 << "too many words: b";
        QTest::newRow("upgrade of nothing") << QStringList{"upgrade"} << 2 << "--all";
        QTest::newRow("no such verb") << QStringList{"kegs", "lst"} << 2 << "kegs has no \"lst\"";
        QTest::newRow("another verb's option") << QStringList{"snapshot", "list", "--roll-back"} << 2
                                               << "--roll-back does not go with \"snapshot list\"";
        QTest::newRow("unknown package")
            << QStringList{"info", "nosuch"} << 1 << "Package 'nosuch' not found";
        QTest::newRow("hostile name")
            << QStringList{"install", "--", "--force"} << 1 << "Package '--force' not found";
    }
    void usage() {
        QFETCH(QStringList, words);
        QFETCH(int, status);
        QFETCH(QString, says);
        const auto outcome = m_program.run(words);
        QCOMPARE(outcome.status, status);
        QVERIFY2((outcome.output + outcome.errors).contains(says),
                 qPrintable(outcome.output + outcome.errors));
    }

    void withoutHomebrew() {
        Program bare;
        QCOMPARE(bare.run({"status"}).status, 0);
        bare.replaceBrew("exit 0\n");
        QFile::setPermissions(bare.brew(), QFile::ReadOwner);
        for (const QStringList &words :
             {QStringList{"list"}, QStringList{"status"}, QStringList{"install", "heron"}}) {
            const auto outcome = bare.run(words);
            QCOMPARE(outcome.status, 4);
            QVERIFY((outcome.output + outcome.errors).contains("Homebrew is not installed"));
        }
    }

    void logTellsWhatRan() {
        const QString log = m_program.run({"log"}).output;
        QVERIFY(log.contains("] [INFO] shell exit=0 duration="));
        QVERIFY(log.contains("] [INFO] brew path resolved: "));
        QVERIFY(log.contains("] [ERROR] shell exit=1 "));
    }
};

QTEST_GUILESS_MAIN(TerminalCommandsTest)
#include "TerminalCommands_test.moc"
