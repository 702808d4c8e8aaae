#include "inventory/state/DependencyGraph.h"
#include "operations/OperationRun.h"
#include "operations/catalogue/UpdateHomebrew.h"
#include "tests/support/Await.h"
#include "tests/support/Formulae.h"
#include "ui/ScreenRegistry.h"
#include "ui/Sidebar.h"
#include "ui/details/DependencyTree.h"
#include "ui/operation/OutputView.h"
#include "ui/startup/RecoveryNotice.h"
#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/ScreenHeader.h"

#include <QApplication>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;
using namespace larkspur::ui;

class WidgetsTest : public QObject {
    Q_OBJECT

    static QColor middleOf(const QIcon &icon, QIcon::Mode mode) {
        const QImage image = icon.pixmap(QSize(48, 48), mode).toImage();
        for (int x = 0; x < 48; ++x)
            for (int y = 0; y < 48; ++y)
                if (image.pixelColor(x, y).alpha() == 255)
                    return image.pixelColor(x, y);
        return {};
    }

  private Q_SLOTS:
    void whatRecoveryDidIsToldOnce() {
        QWidget parent;
        const auto messages = [&] { return parent.findChildren<QMessageBox *>(); };
        RecoveryNotice notice;
        notice.show(&parent);
        QVERIFY(messages().isEmpty()); // nothing was to be put right
        notice.addLine("==> Pinning <b>kelp</b> again");
        notice.show(&parent);
        QCOMPARE(messages().size(), 1);
        QVERIFY(messages().first()->text().contains("has been put right"));
        QVERIFY(messages().first()->informativeText().contains("<b>kelp</b>"));
        delete messages().first();
        notice.addLine("==> Warning: kelp could not be pinned again.");
        notice.show(&parent);
        QVERIFY(messages().first()->text().contains("Not all"));
    }

    void outputViewFollowsRedrawsAndStaysBounded() {
        OperationRun run(updateHomebrew());
        OutputView view;
        view.show();
        view.follow(&run);
        const auto sink = run.sink();
        sink->receive({0, {"a", "10%"}, true});
        QVERIFY(spinUntil([&] { return view.toPlainText() == "a\n10%"; }));
        sink->receive({1, {"90%"}, true});
        sink->receive({1, {"done", "b"}, false});
        QVERIFY(spinUntil([&] { return view.toPlainText() == "a\ndone\nb"; }));
        for (int i = 0; i < 20'000; ++i)
            sink->addLine(QString("line %1").arg(i));
        QVERIFY(spinUntil([&] { return view.toPlainText().endsWith("line 19999"); }));
        QVERIFY(view.document()->blockCount() <= 2000);
        sink->receive({1, {"last"}, false});
        QVERIFY(spinUntil([&] { return view.toPlainText().endsWith("line 19998\nlast"); }));
        // A view that comes late shows what was there before.
        OutputView late;
        late.follow(&run);
        QVERIFY(spinUntil([&] { return late.toPlainText().endsWith("line 19998\nlast"); }));
    }

    void aLongSubtitleDoesNotWidenTheWindow() {
        ScreenHeader header("Updates", "Filter");
        const int narrow = header.minimumSizeHint().width();
        const QString text = QString("The check failed: ") + QString(400, 'x');
        header.setSubtitle(text);
        QCOMPARE(header.minimumSizeHint().width(), narrow);
        header.resize(narrow, header.sizeHint().height());
        header.show();
        QVERIFY(!header.grab().isNull());
        QCOMPARE(header.findChild<ElidedLabel *>()->text(), text); // for the tool tip and screen readers
    }

    void sidebarHidesWhatSimpleModeLeavesOut() {
        Sidebar sidebar;
        QSignalSpy chosen(&sidebar, &Sidebar::screenChosen);
        int visible = 0;
        const auto count = [&] {
            visible = 0;
            for (int i = 0; i < sidebar.topLevelItemCount(); ++i)
                for (int j = 0; j < sidebar.topLevelItem(i)->childCount(); ++j)
                    visible +=
                        sidebar.topLevelItem(i)->isHidden() || sidebar.topLevelItem(i)->child(j)->isHidden()
                            ? 0
                            : 1;
            return visible;
        };
        const auto simple = std::ranges::count_if(screenRegistry(), &ScreenEntry::inSimpleMode);
        QCOMPARE(count(), screenRegistry().size());
        sidebar.setSimpleMode(true);
        QCOMPARE(count(), simple);
        sidebar.setSimpleMode(false);
        QCOMPARE(count(), screenRegistry().size());
        sidebar.setCurrentScreen("taps");
        QCOMPARE(chosen.last().first().toString(), "taps");
    }

    void everyScreenHasIconAndShortcutOfItsOwn() {
        QSet<QString> shortcuts;
        for (const ScreenEntry &entry : screenRegistry()) {
            QVERIFY2(QFile::exists(":/icons/" + entry.icon + ".svg"), qPrintable(entry.icon));
            shortcuts.insert(entry.shortcut.toString());
        }
        QCOMPARE(shortcuts.size(), screenRegistry().size());
    }

    void iconsTakeThePalettesColours() {
        const QPalette before = QApplication::palette();
        const QIcon picture = icon("stop");
        QApplication::setPalette(darkPalette());
        QCOMPARE(middleOf(picture, QIcon::Normal), darkPalette().color(QPalette::WindowText));
        QCOMPARE(middleOf(picture, QIcon::Selected), darkPalette().color(QPalette::HighlightedText));
        QVERIFY(isDark(QApplication::palette()));
        QApplication::setPalette(before);
        QCOMPARE(middleOf(picture, QIcon::Normal), before.color(QPalette::WindowText));
    }

    void textStaysReadable() {
        for (const QPalette &palette : {QApplication::palette(), darkPalette()})
            for (const Tone tone : {Tone::Neutral, Tone::Good, Tone::Attention, Tone::Bad}) {
                const int contrast =
                    std::abs(toneColour(tone, palette).lightness() - toneGround(tone, palette).lightness());
                QVERIFY2(contrast > 60, qPrintable(QString::number(contrast)));
            }
    }

    void dependencyTreeGrowsWithItsRows() {
        const QList<Formula> installed{formulaNeeding("r", {"t/a/x", "z"}),
                                       formulaNeeding("t/a/x", {"y", "r", "gone"}),
                                       formulaNeeding("y", {"t/a/x", "z"}), formulaNeeding("z", {})};
        DependencyTree tree(DependencyGraph(installed), installed.first());
        tree.show();
        QSignalSpy requested(&tree, &DependencyTree::packageRequested);
        const auto opens = [](const QTreeWidgetItem *item) {
            return item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator;
        };
        const int closed = tree.sizeHint().height();
        QTreeWidgetItem *x = tree.topLevelItem(0);
        QVERIFY(opens(x) && !opens(tree.topLevelItem(1)));
        x->setExpanded(true);
        QVERIFY(tree.sizeHint().height() > closed);
        QCOMPARE(x->childCount(), 3);
        QVERIFY(opens(x->child(0)) && !opens(x->child(1)) && !opens(x->child(2))); // "r" closes a circle
        x->child(0)->setExpanded(true);
        QVERIFY(!opens(x->child(0)->child(0))); // and so does "x"
        x->setExpanded(false);
        x->setExpanded(true);
        QCOMPARE(x->childCount(), 3); // not once more
        Q_EMIT tree.itemActivated(x, 0);
        QCOMPARE(requested.first().first().toString(), "x"); // the short name
    }

    void dependencyTreeMakesNoRowsThatNobodySees() {
        const QList<Formula> installed = layersOfTwo(20);
        DependencyTree tree(DependencyGraph(installed), installed.first());
        tree.show();
        const auto rows = [&tree] {
            return tree.findItems("*", Qt::MatchWildcard | Qt::MatchRecursive).size();
        };
        QCOMPARE(rows(), 2);
        tree.setCurrentItem(tree.topLevelItem(0));
        QTest::keyClick(&tree, Qt::Key_Asterisk); // opens everything below in other trees
        QCOMPARE(rows(), 4);
        QTreeWidgetItem *item = tree.topLevelItem(0);
        while (item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator) {
            item->setExpanded(true);
            item = item->child(1);
        }
        QCOMPARE(item->data(0, Qt::UserRole).toString(), "b20");
        QCOMPARE(rows(), 40);
    }
};

QTEST_MAIN(WidgetsTest)
#include "Widgets_test.moc"
