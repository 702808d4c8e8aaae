#include "inventory/refresh/CaskEnrichment.h"
#include "inventory/refresh/CaskReceipt.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>

using namespace larkspur;
using namespace larkspur::test;

class CaskEnrichmentTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    QString in(const QString &name) { return m_folder.filePath(name); }
    void write(const QString &name, const QByteArray &bytes) {
        QDir().mkpath(QFileInfo(in(name)).absolutePath());
        Fixture::write(in(name), bytes);
    }
    void bundle(const QString &name, const QByteArray &version) {
        write(name + "/Contents/Info.plist",
              "<?xml version=\"1.0\"?><plist "
              "version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>" +
                  version + "</string><key>CFBundleVersion</key><string>77</string></dict></plist>");
    }
    CaskFacts read(const char *token, const QStringList &appNames = {}) {
        Cask cask;
        cask.token = token;
        cask.appNames = appNames;
        return readCaskFacts(in("Caskroom"), cask, {in("Applications")});
    }

  private Q_SLOTS:
    void receiptNamesTheBundle() {
        bundle("Elsewhere/Named.app", "3.1");
        write("Caskroom/a/.metadata/INSTALL_RECEIPT.json",
              "{\"time\":1000,\"uninstall_artifacts\":[{\"zap\":[]},{\"app\":[\"X.app\"],\"target\":\"" +
                  in("Elsewhere/Named.app").toUtf8() + "\"}]}");
        const CaskFacts facts = read("a");
        QCOMPARE(facts.actualVersion, "3.1");
        QCOMPARE(facts.actualBuild, "77");
        QCOMPARE(facts.installedOn->toSecsSinceEpoch(), 1000);
    }

    void receiptWithoutPathsMeetsTheRecordedFolder() {
        bundle("Special/Renamed.app", "4");
        write("Caskroom/b/.metadata/INSTALL_RECEIPT.json",
              "{\"uninstall_artifacts\":[{\"app\":[\"X.app\",{\"target\":\"Renamed.app\"}]}]}");
        write("Caskroom/b/.metadata/config.json",
              "{\"default\":{\"appdir\":\"/nowhere\"},\"explicit\":{\"appdir\":\"" + in("Special").toUtf8() +
                  "\"}}");
        QCOMPARE(read("b").actualVersion, "4");
    }

    void whatIsNoApplicationIsNotTakenForOne() {
        write("Caskroom/e/.metadata/INSTALL_RECEIPT.json",
              "{\"uninstall_artifacts\":[{\"app\":[\"Sub/X.app\"]},{\"app\":[\"..\"]},{\"app\":[\".app\"]},"
              "{\"app\":[7]},{\"target\":\"/etc/Y.app\"},{\"app\":[\"Z.app\",{\"target\":\"/a/../b/"
              "W.app\"}]}]}");
        write("Caskroom/e/.metadata/config.json",
              "{\"explicit\":{\"appdir\":\"relative\"},\"env\":{\"appdir\":\"/one/../two\"}}");
        const CaskReceipt receipt = CaskReceipt::at(in("Caskroom/e")).value_or(CaskReceipt());
        QCOMPARE(receipt.applications.size(), 2);
        QCOMPARE(receipt.applications[0].name, "X.app");
        QCOMPARE(receipt.applications[0].place, QString());
        QCOMPARE(receipt.applications[1].name, "W.app");
        QCOMPARE(receipt.applications[1].place, "/b/W.app");
        QCOMPARE(receipt.applicationFolder, "/two");
    }

    void appNamesAreTheFallback() {
        bundle("Applications/Plain.app", "5");
        QCOMPARE(read("c", {"Missing.app", "Plain.app"}).actualVersion, "5");
    }

    void unusableFilesGiveNothing() {
        write("Applications/Bad.app/Contents/Info.plist", "bplist00\x01\x02 not one");
        write("Caskroom/d/.metadata/INSTALL_RECEIPT.json", "{\"uninstall_artifacts\":null,\"time\":\"x\"");
        const CaskFacts facts = read("d", {"Bad.app"});
        QVERIFY(!facts.actualVersion && !facts.installedOn);
        // A pipe in the place of a file is not waited for.
        QFile::remove(in("Applications/Bad.app/Contents/Info.plist"));
        QFile::remove(in("Caskroom/d/.metadata/INSTALL_RECEIPT.json"));
        for (const char *name :
             {"Applications/Bad.app/Contents/Info.plist", "Caskroom/d/.metadata/INSTALL_RECEIPT.json"})
            QCOMPARE(::mkfifo(qPrintable(in(name)), 0600), 0);
        QVERIFY(!read("d", {"Bad.app"}).actualVersion);
    }
};

QTEST_GUILESS_MAIN(CaskEnrichmentTest)
#include "CaskEnrichment_test.moc"
