#include "inventory/state/DependencyGraph.h"
#include "tests/support/Formulae.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class DependencyGraphTest : public QObject {
    Q_OBJECT

    static int nodes(const DependencyNode &node) {
        int count = 1;
        for (const DependencyNode &child : node.children)
            count += nodes(child);
        return count;
    }

  private Q_SLOTS:
    void treeAndDependentsMeetOnShortNames() {
        const QList<Formula> installed{formulaNeeding("acme/t/top", {"acme/t/mid", "gone"}),
                                       formulaNeeding("acme/t/mid", {"acme/t/low"}),
                                       formulaNeeding("acme/t/low", {}),
                                       formulaNeeding("Other", {"acme/t/low"})};
        const DependencyGraph graph(installed);
        const DependencyNode tree = graph.tree(installed.first());
        QCOMPARE(tree.children.size(), 2);
        QCOMPARE(tree.children[0].children[0].formula, (Dependency{"acme/t/low", "low"}));
        QVERIFY(tree.children[1].children.isEmpty() && !tree.children[1].isRepeat); // not installed
        QCOMPARE(graph.dependents("acme/t/low"), QStringList({"mid", "Other"}));
    }

    void circlesEnd() {
        const QList<Formula> installed{formulaNeeding("a", {"b"}), formulaNeeding("b", {"a", "b"})};
        const DependencyNode tree = DependencyGraph(installed).tree(installed.first());
        for (const DependencyNode &child : tree.children[0].children)
            QVERIFY(child.isRepeat && child.children.isEmpty());
    }

    void whatAFormulaNeedsIsToldOnce() {
        const QList<Formula> installed{formulaNeeding("top", {"a", "b", "leaf"}), formulaNeeding("a", {"b"}),
                                       formulaNeeding("b", {"leaf"}), formulaNeeding("leaf", {})};
        const DependencyNode tree = DependencyGraph(installed).tree(installed.first());
        QCOMPARE(tree.children[0].children[0].children[0].formula.name, "leaf");
        QVERIFY(tree.children[1].isRepeat && tree.children[1].children.isEmpty());
        QVERIFY(!tree.children[2].isRepeat); // it needs nothing: nothing was left out
    }

    void manyWaysThroughFewFormulaeStayFewNodes() {
        const QList<Formula> installed = layersOfTwo(20);
        QCOMPARE(nodes(DependencyGraph(installed).tree(installed.first())), 1 + 2 * 20 + 2 * 19);
    }
};

QTEST_GUILESS_MAIN(DependencyGraphTest)
#include "DependencyGraph_test.moc"
