#include "tests/support/Fixture.h"
#include "ui/models/PackageTableModel.h"
#include "userdata/UserDataManager.h"

#include <QAbstractItemModelTester>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;
using namespace larkspur::ui;

class PackageTableModelTest : public QObject {
    Q_OBJECT

    static Inventory inventory() {
        Inventory value;
        const auto formula = [](const QString &fullName, const QString &version, int day) {
            Formula formula;
            formula.name = fullName.section('/', -1);
            formula.fullName = fullName;
            formula.version = version;
            formula.installedOn = QDateTime(QDate(2026, 1, day), QTime(), Qt::UTC);
            return formula;
        };
        value.installedFormulae = {formula("zeta", "1.9", 3), formula("acme/t/alpha", "1.10", 1),
                                   formula("item10", "2", 2), formula("item9", "3", 4)};
        Cask cask;
        cask.token = "zeta";
        cask.name = {"Zeta App"};
        cask.version = "5";
        cask.description = "Draws";
        value.installedCasks = {cask};
        value.outdatedPackages = {{"alpha", "acme/t/alpha", false, {"1.10"}, "1.11", true},
                                  {"zeta", "zeta", true, {"5"}, "6", false},
                                  {"ghost", "acme/t/ghost", false, {"1"}, "2", false}};
        value.pinnedPackages = {"item9"};
        value.packageInstalledSizes = {{{"zeta", false}, 10}, {{"zeta", true}, 30}, {{"item9", false}, 20}};
        return value;
    }
    static QList<PackageRow> rows(PackageSelection selection, const QList<PackageId> &snoozed = {}) {
        Fixture fixture;
        UserDataManager userData(fixture.path("data"), fixture.logger);
        for (const PackageId &id : snoozed)
            userData.snoozePackage(id.name, "6", id.isCask, UntilNextVersion());
        return packageRows(inventory(), userData, selection);
    }
    static QStringList names(const PackageTableModel &model) {
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row)
            names.append(model.row(row).title);
        return names;
    }

  private Q_SLOTS:
    void selections() {
        const auto count = [](PackageSelection selection) { return rows(selection).size(); };
        QCOMPARE(count(PackageSelection::Casks), 1);
        QCOMPARE(count(PackageSelection::Pinned), 2); // one by list, one by its update
        QCOMPARE(count(PackageSelection::Outdated),
                 3); // the one that no list holds is an update all the same
        const QList<PackageId> snoozed{{"zeta", true}, {"ghost", false}}; // the ghost's of another version
        QCOMPARE(rows(PackageSelection::Outdated, snoozed).size(), 2);
        QCOMPARE(rows(PackageSelection::Snoozed, snoozed).value(0).snooze, "Until version after 6");
        for (const PackageRow &row : rows(PackageSelection::Everything))
            if (row.id == PackageId{"zeta", false})
                QVERIFY(row.newVersion.isEmpty()); // the update is the cask's of that name
    }

    void sortsAndFilters() {
        PackageTableModel model;
        const QAbstractItemModelTester tester(&model);
        QList<PackageRow> all = rows(PackageSelection::Everything);
        all.removeIf([](const PackageRow &row) { return row.id.name == "ghost"; });
        model.setRows(all);
        QCOMPARE(names(model), QStringList({"acme/t/alpha", "item9", "item10", "zeta", "Zeta App"}));
        model.setOrder(PackageSortOrder::InstallDate);
        QCOMPARE(names(model).first(), "item9");
        model.setOrder(PackageSortOrder::Size);
        QCOMPARE(names(model).first(3), QStringList({"Zeta App", "item9", "zeta"}));
        model.setFilter("draw"); // descriptions count
        QCOMPARE(names(model), QStringList{"Zeta App"});
        QCOMPARE(model.indexOf({"zeta", true}), 0);
        QCOMPARE(model.indexOf({"zeta", false}), -1);
        model.setFilter({});
        QCOMPARE(model.rowCount(), 5);
    }

    void aThousandRowsInOrder() {
        QList<PackageRow> rows;
        for (int i = 0; i < 1000; ++i)
            rows.append(availableRow(QString("package-%1").arg(i * 7919 % 1000), i % 2 == 0));
        PackageTableModel model;
        model.setRows(rows);
        QCOMPARE(model.rowCount(), 1000);
        QCOMPARE(model.row(0).title, "package-0");
        QCOMPARE(model.row(999).title, "package-999");
    }
};

QTEST_MAIN(PackageTableModelTest)
#include "PackageTableModel_test.moc"
