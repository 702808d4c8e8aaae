#include "core/output/Transcript.h"

#include <QTest>

using namespace larkspur;

class TranscriptTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void redrawsReplaceTheLastLines() {
        Transcript transcript;
        transcript.apply({0, {"a", "b", "c"}, false});
        transcript.apply({2, {"B"}, false});
        transcript.apply({9, {"new"}, false}); // more than there is takes back what there is
        QCOMPARE(transcript.lines(), QStringList{"new"});
    }

    void keepsBeginningAndEndOfTooMuch() {
        Transcript transcript(20'000);
        constexpr int count = 100'000;
        for (int i = 0; i < count; ++i)
            transcript.apply(OutputChange::line(QStringLiteral("line %1").arg(i)));
        const QStringList lines = transcript.lines();
        QVERIFY(lines.size() < 2'000);
        QCOMPARE(lines.size(), transcript.lineCount());
        QCOMPARE(lines.first(), "line 0");
        QCOMPARE(lines.last(), "line 99999");
        const QString note = QStringLiteral("==> … %1 lines are left out here").arg(transcript.leftOut());
        QCOMPARE(lines.count(note), 1);
        QCOMPARE(lines.size() - 1 + transcript.leftOut(), count);
    }
};

QTEST_GUILESS_MAIN(TranscriptTest)
#include "Transcript_test.moc"
