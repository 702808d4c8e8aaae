#include "inventory/state/DependencyGraph.h"

#include "core/brew/PackageName.h"

namespace larkspur {

DependencyGraph::DependencyGraph(const QList<Formula> &installed) {
    for (const Formula &formula : installed) {
        m_dependencies.insert(formula.name, formula.dependencies);
        for (const QString &dependency : formula.dependencies)
            m_dependents[shortName(dependency)].append(formula.name);
    }
    for (QStringList &names : m_dependents)
        names.sort(Qt::CaseInsensitive);
}

DependencyNode DependencyGraph::tree(const Formula &formula) const {
    QStringList above;
    return node(formula.fullName, formula.dependencies, above);
}

QStringList DependencyGraph::dependents(const QString &name) const {
    return m_dependents.value(shortName(name));
}

DependencyNode DependencyGraph::node(const QString &fullName, const QStringList &dependencies,
                                     QStringList &above) const {
    constexpr qsizetype deepest = 40;
    DependencyNode node{fullName, shortName(fullName), {}};
    if (above.contains(node.name) || above.size() >= deepest)
        return node;
    above.append(node.name);
    for (const QString &dependency : dependencies)
        node.children.append(this->node(dependency, m_dependencies.value(shortName(dependency)), above));
    above.removeLast();
    return node;
}

} // namespace larkspur
