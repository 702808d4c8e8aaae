#include "core/output/PhraseSet.h"

#include <QRandomGenerator>
#include <QTest>

#include <array>

using namespace larkspur;

class PhraseSetTest : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void findsWhatASearchFinds() {
        // Short phrases over few letters: they overlap, contain and begin one another.
        static constexpr std::array phrases{"ab", "abab", "ba", "bcab", "a", "cc"};
        const PhraseSet set{phrases[0], phrases[1], phrases[2], phrases[3], phrases[4], phrases[5]};
        QRandomGenerator random(7);
        for (int i = 0; i < 5000; ++i) {
            QString text;
            for (int j = random.bounded(12); j > 0; --j)
                text += QString("abcABC\u00e4\u0431")[random.bounded(8)];
            PhraseSet::Found expected = 0;
            for (std::size_t p = 0; p < phrases.size(); ++p)
                if (text.contains(phrases[p], Qt::CaseInsensitive))
                    expected |= PhraseSet::bit(static_cast<int>(p));
            QVERIFY2(set.in(text) == expected, qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(PhraseSetTest)
#include "PhraseSet_test.moc"
