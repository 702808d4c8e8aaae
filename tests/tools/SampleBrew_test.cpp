#include "inventory/decoding/BrewInfoDecoder.h"
#include "inventory/decoding/Conversion.h"
#include "inventory/decoding/ListDecoders.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace larkspur;

/// The sample Homebrew keeps to the shapes of the real one.
class SampleBrewTest : public QObject {
    Q_OBJECT

    struct Answer {
        int status;
        QByteArray output;
        QByteArray errors;
    };

    QTemporaryDir m_folder;

    QString prefix() const { return m_folder.filePath("homebrew"); }
    Answer brew(const QStringList &words) const {
        QProcess process;
        process.start(prefix() + "/bin/brew", words);
        if (!process.waitForFinished())
            qFatal("the sample brew has not ended");
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }
    /// Every path below the prefix, with what a link points to.
    QStringList tree() const {
        QStringList paths;
        QDirIterator entries(m_folder.path(),
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            entries.next();
            paths.append(entries.filePath() + (entries.fileInfo().isSymLink()
                                                   ? " -> " + entries.fileInfo().symLinkTarget()
                                                   : QString()));
        }
        paths.sort();
        return paths;
    }

  private Q_SLOTS:
    void initTestCase() { QCOMPARE(QProcess::execute(SAMPLE_BREW, {"--create", prefix()}), 0); }

    void isAsLargeAsARealMachine() {
        const auto info = decodeBrewInfo(brew({"info", "--installed", "--json=v2"}).output);
        QVERIFY(info && info->formulae.failures.isEmpty() && info->casks.failures.isEmpty());
        QVERIFY(info->formulae.elements.size() >= 30 && info->casks.elements.size() >= 10);
        for (const FormulaJSON &formula : info->formulae.elements) {
            const Formula found = toFormula(formula);
            QVERIFY2(found.installedOn && found.description && found.sourceURL, qPrintable(found.name));
            QVERIFY(QDir(prefix() + "/Cellar/" + found.name + '/' + found.version).exists());
            for (const QString &dependency : found.dependencies)
                QVERIFY2(QDir(prefix() + "/Cellar/" + dependency.section('/', -1)).exists(),
                         qPrintable(dependency));
        }
        QStringList withoutApp;
        for (const CaskJSON &cask : info->casks.elements)
            if (!QDir(m_folder.filePath("Applications/" + cask.appNames.first() + "/Contents")).exists())
                withoutApp.append(cask.token);
        QCOMPARE(withoutApp, QStringList{"lichen-notes"}); // removed by hand
    }

    void namesAsHomebrewDoes() {
        const auto outdated = decodeOutdated(brew({"outdated", "--json=v2"}).output);
        QVERIFY(outdated);
        bool isQualified = false;
        for (const OutdatedFormula &formula : outdated->formulae.elements)
            isQualified = isQualified || formula.name == "brightfen/tools/fenlight";
        QVERIFY(isQualified);
        QVERIFY(brew({"leaves"}).output.contains("brightfen/tools/fenlight\n"));
        QVERIFY(!brew({"list"}).output.contains('/'));
        QVERIFY(brew({"list", "--full-name"})
                    .output.contains("oddments/lab/oddjob\n")); // listed though not trusted
        QVERIFY(!brew({"info", "--installed", "--json=v2"}).output.contains("oddjob"));
        QVERIFY(brew({"info", "--formula", "--json=v2", "oddjob"})
                    .errors.startsWith("Error: Refusing to load formula"));
        const QJsonObject installed =
            QJsonDocument::fromJson(
                brew({"info", "--json=v2", "heron"}).output)["formulae"][0]["installed"][0]
                .toObject();
        QVERIFY(installed.contains("installed_on_request") && !installed.contains("installed_as_dependency"));
    }

    void failsAsHomebrewDoes_data() {
        QTest::addColumn<QStringList>("words");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("errors"); // their beginning
        const auto row = [](const QStringList &words, int status, const QByteArray &errors) {
            QTest::newRow(qPrintable(words.join(' '))) << words << status << errors;
        };
        row({"info", "--formula", "--json=v2", "nosuch"}, 1,
            "Error: No available formula with the name \"nosuch\".");
        row({"info", "--cask", "--json=v2", "nosuch"}, 1,
            "Error: Cask 'nosuch' is unavailable: No Cask with this name exists.");
        row({"install", "nosuch"}, 1,
            "Warning: No available formula with the name \"nosuch\".\nError: No formulae or casks found for "
            "nosuch.");
        row({"uninstall", "nosuch"}, 1, "Error: No such keg: ");
        row({"uninstall", "libtide"}, 1, "Error: Refusing to uninstall ");
        row({"uninstall", "--cask", "copperplate"}, 1, "Error: Cask 'copperplate' is not installed.");
        row({"upgrade", "--formula", "kelp"}, 1, "Error: Not upgrading 1 pinned package:");
        row({"upgrade", "--formula", "tern"}, 0, "Warning: tern 0.3.8 already installed");
        row({"install", "tern"}, 0, "Warning: tern 0.3.8 is already installed and up-to-date.");
        row({"search", "zzzz"}, 1, "Error: No formulae or casks found for \"zzzz\".");
        row({"frobnicate"}, 1, "Error: Invalid usage: Unknown command: brew frobnicate");
    }
    void failsAsHomebrewDoes() {
        QFETCH(QStringList, words);
        QFETCH(int, status);
        QFETCH(QByteArray, errors);
        const QStringList before = tree();
        const Answer answer = brew(words);
        QCOMPARE(answer.status, status);
        QVERIFY2(answer.errors.startsWith(errors), answer.errors.constData());
        QCOMPARE(tree(), before); // nothing was changed
    }

    void installAndUninstallLeaveNothing() {
        const QStringList before = tree();
        QCOMPARE(brew({"install", "dovetail"}).status, 0);
        QVERIFY(tree() != before);
        QProcess installed;
        installed.start(prefix() + "/bin/dovetail", QStringList());
        QVERIFY(installed.waitForFinished());
        QCOMPARE(installed.readAllStandardOutput(), "dovetail 1.1.4\n");
        QCOMPARE(brew({"uninstall", "dovetail"}).status, 0);
        QCOMPARE(brew({"install", "--cask", "eiderdown"}).status, 0);
        QCOMPARE(brew({"uninstall", "--cask", "eiderdown"}).status, 0);
        QCOMPARE(tree(), before);
    }

    void upgradeReplacesTheKegAndItsDependencies() {
        const Answer answer = brew({"upgrade", "--formula", "quillmark"});
        QCOMPARE(answer.status, 0);
        QVERIFY(answer.output.contains("==> Installing dependencies for quillmark: libmosaic and pixlib\n"));
        QVERIFY(answer.output.contains("==> Upgraded 1 outdated package\n"));
        QVERIFY(answer.errors.startsWith(
            "==> Fetching downloads for: quillmark\n")); // on standard error off a terminal
        QCOMPARE(QDir(prefix() + "/Cellar/quillmark").entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 QStringList{"3.6.0"});
        QCOMPARE(QFileInfo(prefix() + "/opt/pixlib").symLinkTarget(), prefix() + "/Cellar/pixlib/6.0.2");
        QVERIFY(!QFileInfo::exists(prefix() + "/bin/saltstone")); // keg-only formulae are not linked
    }

    void aFailedBuildKeepsTheOldKegAndNamesNoError() {
        const Answer answer = brew({"upgrade", "--formula", "hearthbuild"});
        QCOMPARE(answer.status, 1);
        QVERIFY(!answer.output.contains("Error:") && !answer.errors.contains("Error:"));
        QCOMPARE(QFileInfo(prefix() + "/opt/hearthbuild").symLinkTarget(),
                 prefix() + "/Cellar/hearthbuild/4.0.0");
    }
};

QTEST_GUILESS_MAIN(SampleBrewTest)
#include "SampleBrew_test.moc"
