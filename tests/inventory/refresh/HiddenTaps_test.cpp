#include "inventory/refresh/HiddenTaps.h"

#include <QTest>

using namespace larkspur;

class HiddenTapsTest : public QObject {
    Q_OBJECT

    static TapInfo tap(const QString &name, std::optional<bool> trusted = std::nullopt,
                       bool official = false) {
        TapInfo info;
        info.name = name;
        info.isTrusted = trusted;
        info.isOfficial = official;
        return info;
    }

  private Q_SLOTS:
    void trustComesFromWhoeverSaysSo() {
        TapInfo remote = tap("acme/own");
        remote.remote = "https://git.example.com/Own";
        const QList<TapInfo> taps{tap("homebrew/core", std::nullopt, true),
                                  tap("acme/a", true),
                                  tap("acme/b", false),
                                  tap("Acme/C"),
                                  remote,
                                  tap("acme/d")};
        const TrustState trust{{"acme/c", "https://git.example.com/own", "acme/b"}, {"acme/d/one"}, {}};
        QCOMPARE(trustedTapNames(taps, trust),
                 QSet<QString>({"homebrew/core", "acme/a", "Acme/C", "acme/own"}));
        const auto hidden =
            hiddenTaps(taps, trust, {"acme/d/one", "acme/d/two", "acme/b/x", "acme/bb/y", "plain"});
        QCOMPARE(hidden, QList<HiddenTap>({{"acme/b", {"acme/b/x"}}, {"acme/d", {"acme/d/two"}}}));
    }

    void dismissedTapsComeBackWithANewOne() {
        const QList<HiddenTap> hidden{{"a/a", {}}, {"b/b", {}}};
        QVERIFY(tapsToReport(hidden, {"a/a", "b/b"}).isEmpty());
        QCOMPARE(tapsToReport(hidden, {"a/a"}), hidden);
    }
};

QTEST_GUILESS_MAIN(HiddenTapsTest)
#include "HiddenTaps_test.moc"
