#include "core/output/TerminalSafeText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace larkspur;

class TerminalSafeTextTest : public QObject {
    Q_OBJECT

    static bool isObeyed(char32_t unit) {
        return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0x61C || unit == 0x200E ||
               unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
    }

  private Q_SLOTS:
    void everyCharacterIsKeptOrMadeHarmless() {
        for (char16_t unit = 0; unit < 0xD800; ++unit) {
            const QString text = QString("a") + QChar(unit) + "b";
            const bool isLayout = unit == '\n' || unit == '\t';
            const bool isKept = !isObeyed(unit) || isLayout;
            QCOMPARE(safeForTerminal(text), isKept ? text : u"a\uFFFDb"_qs);
            QCOMPARE(safeForTerminalLine(text), isLayout ? QString("a b") : safeForTerminal(text));
        }
    }

    void texts_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("safe");
        QTest::newRow("clipboard") << u"x\u001B]52;c;aGk=\u0007y"_qs << u"x\uFFFD]52;c;aGk=\uFFFDy"_qs;
        QTest::newRow("Windows line ends") << "a\r\nb\r\n" << "a\nb\n";
        QTest::newRow("the end of a split line") << "a\r" << "a";
        QTest::newRow("overwriting") << u"bad\rgood"_qs << u"bad\uFFFDgood"_qs;
        QTest::newRow("beyond the first plane") << u"🍺 größe"_qs << u"🍺 größe"_qs;
        QTest::newRow("nothing") << "" << "";
    }
    void texts() {
        QFETCH(QString, text);
        QTEST(safeForTerminal(text), "safe");
    }

    void jsonStaysEqual() {
        QString all;
        for (char16_t unit = 1; unit < 0x2070; ++unit)
            all += QChar(unit);
        const QJsonDocument document(QJsonArray{all, u"🍺\\\u009B"_qs});
        const QString safe = safeJsonForTerminal(QString::fromUtf8(document.toJson()));
        QCOMPARE(QJsonDocument::fromJson(safe.toUtf8()), document);
        for (const QChar character : safe)
            QVERIFY(character == u'\n' || !isObeyed(character.unicode()));
    }
};

QTEST_GUILESS_MAIN(TerminalSafeTextTest)
#include "TerminalSafeText_test.moc"
