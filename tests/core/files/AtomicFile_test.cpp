#include "core/files/AtomicFile.h"
#include "core/settings/Preferences.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// Files and preferences that people trust.
class AtomicFileTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void replacesWholeFilesAndLeavesNothingBeside() {
        QTemporaryDir folder;
        const QString path = folder.filePath("deep/er/file.json");
        QVERIFY(writeFileAtomically(path, "one"));
        QVERIFY(writeFileAtomically(path, QByteArray(3'000'000, 'x')));
        QVERIFY(writeFileAtomically(path, "two"));
        QCOMPARE(Fixture::read(path), "two");
        QCOMPARE(QDir(folder.filePath("deep/er")).entryList(QDir::Files | QDir::Hidden),
                 QStringList{"file.json"});
    }

    void aFailureKeepsTheOldAndSaysWhy() {
        QTemporaryDir folder;
        Fixture::write(folder.filePath("file"), "x");
        const auto below = writeFileAtomically(folder.filePath("file/below"), "y");
        QVERIFY(!below && below.error().contains("cannot be made"));
        QVERIFY(QDir(folder.path()).mkdir("folder"));
        const auto inPlaceOfAFolder = writeFileAtomically(folder.filePath("folder"), "y");
        QVERIFY(!inPlaceOfAFolder && !inPlaceOfAFolder.error().isEmpty());
        const auto noSpace = writeFileAtomically("/dev/full/x", "y");
        QVERIFY(!noSpace);
        QCOMPARE(Fixture::read(folder.filePath("file")), "x");
    }

    void preferencesWithOddValuesReadAsTheirDefault() {
        Fixture fixture;
        Preferences &preferences = fixture.preferences;
        QSignalSpy changes(&preferences, &Preferences::changed);
        QVERIFY(!preferences.boolean("missing"));
        QVERIFY(preferences.boolean("missing", true));
        preferences.set("list", QStringList{"a"});
        QCOMPARE(preferences.strings("list"), QStringList{"a"});
        QCOMPARE(preferences.strings("missing"), QStringList());
        preferences.set("list", QStringList{"a"}); // nothing new
        preferences.set("list", QStringList{"a", "b"});
        QCOMPARE(changes.count(), 2);
        preferences.set("geometry", QByteArray("\x00\xff", 2));
        QCOMPARE(preferences.bytes("geometry"), QByteArray("\x00\xff", 2));
    }
};

QTEST_GUILESS_MAIN(AtomicFileTest)
#include "AtomicFile_test.moc"
