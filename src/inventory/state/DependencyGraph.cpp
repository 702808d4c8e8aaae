#include "inventory/state/DependencyGraph.h"

#include "core/brew/PackageName.h"

#include <QSet>

namespace larkspur {

namespace {

/// Fills a tree in the order of reading.
class TreeMaker {
  public:
    explicit TreeMaker(const DependencyGraph &graph)
        : m_graph(graph) {}

    void fill(DependencyNode &node, const QList<Dependency> &needs, int depth = 0) {
        constexpr int deepest = 100; // no formula of Homebrew comes near it, and readers of JSON go so deep
        if (needs.isEmpty())
            return;
        node.isRepeat = m_told.contains(node.formula.name);
        if (node.isRepeat || depth == deepest)
            return;
        m_told.insert(node.formula.name);
        for (const Dependency &needed : needs) {
            node.children.append({needed});
            fill(node.children.last(), m_graph.needs(needed.name), depth + 1);
        }
    }

  private:
    const DependencyGraph &m_graph;
    QSet<QString> m_told; ///< formulae whose needs are in the tree
};

} // namespace

DependencyGraph::DependencyGraph(const QList<Formula> &installed) {
    for (const Formula &formula : installed) {
        m_dependencies.insert(formula.name, formula.dependencies);
        for (const QString &dependency : formula.dependencies)
            m_dependents[shortName(dependency)].append(formula.name);
    }
    for (QStringList &names : m_dependents)
        names.sort(Qt::CaseInsensitive);
}

QList<Dependency> DependencyGraph::needs(const QString &name) const {
    return dependenciesNamed(m_dependencies.value(shortName(name)));
}

DependencyNode DependencyGraph::tree(const Formula &formula) const {
    DependencyNode root{{formula.fullName, shortName(formula.fullName)}};
    TreeMaker(*this).fill(root, dependenciesNamed(formula.dependencies));
    return root;
}

QStringList DependencyGraph::dependents(const QString &name) const {
    return m_dependents.value(shortName(name));
}

QList<Dependency> dependenciesNamed(const QStringList &fullNames) {
    QList<Dependency> dependencies;
    for (const QString &name : fullNames)
        dependencies.append({name, shortName(name)});
    return dependencies;
}

} // namespace larkspur
