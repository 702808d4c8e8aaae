#include "core/output/LineSplitter.h"

#include <QTest>

using namespace larkspur;

class LineSplitterTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void splits_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("plain") << QByteArray("one\ntwo\n") << QStringList{"one", "two"};
        QTest::newRow("no line end at all") << QByteArray("one") << QStringList{"one"};
        QTest::newRow("last fragment") << QByteArray("one\ntwo") << QStringList{"one", "two"};
        QTest::newRow("CR LF") << QByteArray("one\r\n\r\ntwo\r\n") << QStringList{"one", "", "two"};
        QTest::newRow("beer") << QByteArray("🍺 one\n🍺") << QStringList{"🍺 one", "🍺"};
        QTest::newRow("half a character")
            << QByteArray("a\xF0\x9F\nb\n") << QStringList{"a\uFFFD\uFFFD", "b"};
        QTest::newRow("nothing") << QByteArray() << QStringList{};
    }
    void splits() {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, lines);
        for (qsizetype size = 1; size <= std::max<qsizetype>(1, bytes.size()); ++size) {
            LineSplitter splitter;
            QStringList found;
            for (qsizetype i = 0; i < bytes.size(); i += size)
                found += splitter.feed(QByteArrayView(bytes).sliced(i, std::min(size, bytes.size() - i)));
            found += splitter.finish();
            QCOMPARE(found, lines);
        }
    }

    void deliversEndlessLinesInPieces() {
        LineSplitter splitter;
        QByteArray endless;
        while (endless.size() < 3 * LineSplitter::longestLine)
            endless += "🍺";
        QString text;
        for (qsizetype i = 0; i < endless.size(); i += 65'537) {
            const QStringList pieces = splitter.feed(
                QByteArrayView(endless).sliced(i, std::min<qsizetype>(65'537, endless.size() - i)));
            text += pieces.join(QString());
        }
        QVERIFY(!text.isEmpty()); // something came before the end
        text += splitter.finish().join(QString());
        QCOMPARE(text.toUtf8(), endless);
    }
};

QTEST_GUILESS_MAIN(LineSplitterTest)
#include "LineSplitter_test.moc"
