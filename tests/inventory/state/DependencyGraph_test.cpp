#include "inventory/state/DependencyGraph.h"

#include <QTest>

using namespace larkspur;

class DependencyGraphTest : public QObject {
    Q_OBJECT

    static Formula formula(const QString &name, const QStringList &dependencies) {
        Formula formula;
        formula.name = name.section('/', -1);
        formula.fullName = name;
        formula.dependencies = dependencies;
        return formula;
    }

  private Q_SLOTS:
    void treeAndDependentsMeetOnShortNames() {
        const QList<Formula> installed{formula("acme/t/top", {"acme/t/mid", "gone"}),
                                       formula("acme/t/mid", {"acme/t/low"}), formula("acme/t/low", {}),
                                       formula("Other", {"acme/t/low"})};
        const DependencyGraph graph(installed);
        const DependencyNode tree = graph.tree(installed.first());
        QCOMPARE(tree.children.size(), 2);
        QCOMPARE(tree.children[0].children[0].id, "acme/t/low");
        QVERIFY(tree.children[1].children.isEmpty()); // not installed
        QCOMPARE(graph.dependents("acme/t/low"), QStringList({"mid", "Other"}));
    }

    void circlesEnd() {
        const QList<Formula> installed{formula("a", {"b"}), formula("b", {"a", "b"})};
        const DependencyNode tree = DependencyGraph(installed).tree(installed.first());
        QVERIFY(tree.children[0].children[0].children.isEmpty());
    }
};

QTEST_GUILESS_MAIN(DependencyGraphTest)
#include "DependencyGraph_test.moc"
