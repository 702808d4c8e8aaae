#include "operations/snapshots/Snapshot.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace larkspur;

class SnapshotTest : public QObject {
    Q_OBJECT

    static Snapshot sample() {
        return {.id = QUuid("{1f2e3d4c-5b6a-4978-8c9d-0e1f2a3b4c5d}"),
                .date = QDateTime::fromString("2026-11-01T12:34:56.789Z", Qt::ISODateWithMs),
                .trigger = SnapshotTrigger::PreUpgrade,
                .formulae = {{"heron", "8.1_2", false}, {"same", "1", false}, {"gone", "3", false}},
                .casks = {{"same", "5,12", true}},
                .taps = {"homebrew/core", "acme/tools"},
                .note = "vor dem größten Update"};
    }

  private Q_SLOTS:
    void whatIsWrittenReadsBack() {
        Snapshot snapshot = sample();
        QCOMPARE(*snapshotFromText(snapshotText(snapshot)), snapshot);
        snapshot.note.reset();
        snapshot.formulae.clear();
        QCOMPARE(*snapshotFromText(snapshotText(snapshot)), snapshot);
        QCOMPARE(QJsonDocument::fromJson(snapshotText(sample())).object().keys(),
                 QStringList({"casks", "date", "formulae", "id", "note", "taps", "trigger"}));
    }

    void theFutureReadsAndGarbageDoesNot() {
        QByteArray text = snapshotText(sample());
        text.replace("\"trigger\"", "\"machine\": {\"a\": [1]}, \"trigger\"");
        QCOMPARE(*snapshotFromText(text), sample());
        QVERIFY(!snapshotFromText(QByteArray(text).replace("preUpgrade", "tomorrow")));
        QVERIFY(!snapshotFromText(QByteArray(text).replace("\"version\"", "\"verse\"")));
        for (const char *key : {"id", "date", "trigger", "formulae", "casks"})
            QVERIFY2(!snapshotFromText(QByteArray(text).replace('"' + QByteArray(key) + '"', "\"other\"")),
                     key);
        QVERIFY(!snapshotFromText(QByteArray(text).replace("\"heron\"", "7")));
        const qsizetype whole = text.trimmed().size();
        for (qsizetype length = 0; length < whole; ++length) // a disk that was full at any byte
            QVERIFY(!snapshotFromText(text.first(length)));
        QVERIFY(!snapshotFromText("[]"));
    }

    void aListThatIsTooLongIsRefusedAndNeverCut_data() {
        QTest::addColumn<QString>("list");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("reads");
        for (const char *list : {"formulae", "casks", "taps"}) {
            QTest::addRow("%s within the limit", list) << list << 20'000 << true;
            QTest::addRow("%s beyond it", list) << list << 20'001 << false;
            QTest::addRow("%s far beyond it", list) << list << 100'000 << false;
        }
    }
    void aListThatIsTooLongIsRefusedAndNeverCut() {
        QFETCH(QString, list);
        QFETCH(int, count);
        QFETCH(bool, reads);
        Snapshot snapshot = sample();
        QList<SnapshotEntry> entries;
        QStringList taps;
        for (int i = 0; i < count; ++i) {
            entries.append({QString("p%1").arg(i), "1", list == "casks"});
            taps.append(QString("acme/t%1").arg(i));
        }
        if (list == "taps")
            snapshot.taps = taps;
        else
            (list == "casks" ? snapshot.casks : snapshot.formulae) = entries;
        const auto read = snapshotFromText(snapshotText(snapshot));
        QCOMPARE(read.has_value(), reads);
        if (reads)
            QCOMPARE(*read, snapshot);
        else
            QCOMPARE(read.error(), "More than 20000 entries at '" + list + "'");
    }

    void comparing() {
        const Snapshot older = sample();
        Snapshot newer = older;
        newer.casks[0].version = "6";
        const SnapshotDiff onlyCask = compareSnapshots(older, newer);
        QCOMPARE(onlyCask.changed, (QList<SnapshotVersionChange>{{{"same", "5,12", true}, "6"}}));
        QVERIFY(onlyCask.removed.isEmpty() && onlyCask.added.isEmpty());
        newer = older;
        newer.formulae.removeLast();
        newer.formulae.append({"new", "1", false});
        newer.casks.append({"heron", "1", true}); // a cask of a formula's name
        const SnapshotDiff diff = compareSnapshots(older, newer);
        QCOMPARE(diff.removed, (QList<SnapshotEntry>{{"gone", "3", false}}));
        QCOMPARE(diff.added, (QList<SnapshotEntry>{{"new", "1", false}, {"heron", "1", true}}));
        QVERIFY(diff.changed.isEmpty());
        QVERIFY(compareSnapshots(older, older).isEmpty());
    }
};

QTEST_GUILESS_MAIN(SnapshotTest)
#include "Snapshot_test.moc"
