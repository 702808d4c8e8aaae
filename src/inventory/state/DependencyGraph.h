#pragma once

#include "inventory/records/Formula.h"

#include <QHash>

namespace larkspur {

/// A formula that another one needs.
struct Dependency {
    QString id;   ///< full name
    QString name; ///< short name

    bool operator==(const Dependency &) const = default;
};

/// One node of a formula's dependency tree.
struct DependencyNode {
    Dependency formula;
    QList<DependencyNode> children = {};
    bool isRepeat = false; ///< what it needs stands in the tree already, and not here again
};

/// Who needs whom among the installed formulae. Built once per inventory, in time linear in its size; copies
/// share their content.
class DependencyGraph {
  public:
    explicit DependencyGraph(const QList<Formula> &installed);

    /// What a formula needs directly. Nothing is known of formulae that are not installed.
    QList<Dependency> needs(const QString &name) const;

    /// The formula, installed or not, with everything it needs, however deep. Ways through a graph can be
    /// without number where its formulae are few, so what a formula needs stands in the tree only once: where
    /// it comes first in the order of reading.
    DependencyNode tree(const Formula &formula) const;

    /// Short names of the installed formulae that need this one directly, sorted.
    QStringList dependents(const QString &name) const;

  private:
    QHash<QString, QStringList> m_dependencies; ///< by short name
    QHash<QString, QStringList> m_dependents;   ///< by short name
};

/// Full names as dependencies.
QList<Dependency> dependenciesNamed(const QStringList &fullNames);

} // namespace larkspur
