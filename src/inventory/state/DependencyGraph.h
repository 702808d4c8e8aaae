#pragma once

#include "inventory/records/Formula.h"

#include <QHash>

namespace larkspur {

/// One node of a formula's dependency tree.
struct DependencyNode {
    QString id;   ///< full name
    QString name; ///< short name
    QList<DependencyNode> children;
};

/// Who needs whom among the installed formulae. Built once per inventory, in time linear in its size.
class DependencyGraph {
  public:
    explicit DependencyGraph(const QList<Formula> &installed);

    /// The formula with everything it needs, however deep. What is not installed, or would close a circle,
    /// has no children.
    DependencyNode tree(const Formula &formula) const;

    /// Short names of the installed formulae that need this one directly, sorted.
    QStringList dependents(const QString &name) const;

  private:
    DependencyNode node(const QString &fullName, const QStringList &dependencies, QStringList &above) const;

    QHash<QString, QStringList> m_dependencies; ///< by short name
    QHash<QString, QStringList> m_dependents;   ///< by short name
};

} // namespace larkspur
