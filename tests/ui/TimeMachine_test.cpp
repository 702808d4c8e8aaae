#include "tests/support/OperationWorld.h"
#include "ui/settings/KegSettings.h"
#include "ui/timemachine/CompareSheet.h"
#include "ui/timemachine/DiffView.h"
#include "ui/timemachine/RestoreSheet.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

using namespace larkspur;
using namespace larkspur::test;

/// The sheets of the Time Machine, on records made here.
class TimeMachineTest : public QObject {
    Q_OBJECT

    static Snapshot snapshot(int day, const QList<SnapshotEntry> &formulae) {
        return {.id = QUuid::createUuid(),
                .date = QDateTime(QDate(2026, 11, day), QTime(12, 0), Qt::UTC),
                .formulae = formulae};
    }
    static QStringList groups(const QWidget &sheet) {
        QStringList titles;
        const auto *view = sheet.findChild<ui::DiffView *>();
        for (int i = 0; i < view->topLevelItemCount(); ++i)
            titles.append(view->topLevelItem(i)->text(0));
        return titles;
    }

  private Q_SLOTS:
    void comparing() {
        const QList<SnapshotEntry> old{{"a", "1", false}, {"b", "1", false}};
        ui::CompareSheet sheet(
            {snapshot(3, {{"a", "2", false}, {"c", "1", false}}), snapshot(2, old), snapshot(1, old)});
        QCOMPARE(groups(sheet), QStringList{"Select two snapshots to compare."});
        sheet.choose(1, 1);
        QCOMPARE(groups(sheet), QStringList{"Pick two different snapshots to compare."});
        sheet.choose(1, 2);
        QCOMPARE(groups(sheet), QStringList{"These two snapshots have the same packages."});
        for (const auto &[first, second] : {std::pair(0, 1), std::pair(1, 0)}) { // whichever way round
            sheet.choose(first, second);
            QCOMPARE(groups(sheet), QStringList({"Only in the older one (1)", "Only in the newer one (1)",
                                                 "Other version (1)"}));
        }
    }

    void restoring() {
        const Snapshot point = snapshot(1, {});
        const RestorePlan plan{.missingTaps = {"acme/tools"},
                               .missing = {{"gone", "1", true}},
                               .added = {{"new", "2", false}},
                               .rollable = {{{"heron", "8.10.0", false}, "8.11.1"}},
                               .notRollable = {{{"app", "1", true}, "2"}},
                               .refusals = {"\"--force\" is left out: this is no name of a formula"}};
        ui::RestoreSheet sheet(point, plan);
        QCOMPARE(groups(sheet), QStringList({"Taps to add (1)", "In the snapshot but missing now (1)",
                                             "Installed at a different version (1)",
                                             "At a different version, without a saved copy (1)",
                                             "Left out of this restore point (1)",
                                             "Installed since the snapshot — left untouched (1)"}));
        for (auto *box : sheet.findChildren<QCheckBox *>())
            box->setChecked(true);
        QCOMPARE(groups(sheet).last(), "Installed since the snapshot — will be uninstalled (1)");
        QCOMPARE(groups(sheet)[2], "Will be rolled back to the snapshot version (1)");
        QVERIFY(sheet.order().removesAdded && sheet.order().rollsBackVersions);
        QCOMPARE(sheet.order().snapshot, point.id);
        const ui::RestoreSheet nothing(point, {});
        QCOMPARE(groups(nothing), QStringList{"Nothing to restore (1)"});
        const ui::RestoreSheet damaged(point, {.kept = {{"new", "2", false}}, .refusals = {"x is left out"}});
        QCOMPARE(groups(damaged), QStringList({"Nothing to restore (1)", "Left out of this restore point (1)",
                                               "Perhaps installed since the snapshot — left untouched (1)"}));
    }

    void theSpaceOfSavedVersions() {
        OperationWorld world;
        KegStore store(world.path("kegs"), world.sync);
        for (const char *version : {"1", "2"}) {
            const QString partial = store.partialPath();
            QDir().mkpath(partial);
            QVERIFY(store.adopt(partial, *TreeScan::of(partial, TreeScan::Depth::Contents),
                                {.formula = "x",
                                 .version = version,
                                 .bytes = 3 * 1024 * 1024,
                                 .date = QDateTime::currentDateTimeUtc()}));
        }
        world.preferences.set(keys::kegPreservationLocation, world.path("away"));
        ui::KegSettings settings({world.preferences, world.kegs, world.tasks});
        settings.show();
        const auto says = [&](const QString &text) {
            for (const QLabel *label : settings.findChildren<QLabel *>())
                if (label->isVisible() && label->text().startsWith(text))
                    return true;
            return false;
        };
        QVERIFY(says("This location isn't available right now (drive not mounted)."));
        world.preferences.set(keys::kegPreservationLocation, QString());
        QVERIFY(says("2 saved versions take 6"));
        auto *list = settings.findChild<QTreeWidget *>();
        QCOMPARE(list->topLevelItem(0)->childCount(), 2);
        const auto removeFirst = [&] {
            list->topLevelItem(0)->child(0)->setSelected(true);
            for (auto *button : settings.findChildren<QPushButton *>())
                if (button->text() == "Remove")
                    QTest::mouseClick(button, Qt::LeftButton);
        };
        // What could not be removed is said beside what there is.
        const QString rack = world.path("kegs") + "/x";
        QVERIFY(QDir().rename(rack, world.path("x")) && QFile::link(world.path("x"), rack));
        removeFirst();
        QVERIFY(spinUntil([&] { return says(rack + " is a link"); }));
        QVERIFY(says("2 saved versions take 6"));
        QVERIFY(QFile::remove(rack) && QDir().rename(world.path("x"), rack));
        removeFirst();
        QVERIFY(spinUntil([&] { return !says(rack); }));
        QVERIFY(spinUntil([&] { return world.kegs.entries().size() == 1; }));
        QVERIFY(says("1 saved version takes 3"));
    }
};

QTEST_MAIN(TimeMachineTest)
#include "TimeMachine_test.moc"
