#pragma once

#include "inventory/records/Formula.h"

namespace larkspur::test {

inline Formula formulaNeeding(const QString &fullName, const QStringList &dependencies) {
    Formula formula;
    formula.name = fullName.section('/', -1);
    formula.fullName = fullName;
    formula.dependencies = dependencies;
    return formula;
}

/// A formula "top" that needs two, each of which needs the same two, and so on: 2 ^ depth ways to the last.
inline QList<Formula> layersOfTwo(int depth) {
    QList<Formula> formulae{formulaNeeding("top", {"a1", "b1"})};
    for (int layer = 1; layer <= depth; ++layer) {
        const QString next = QString::number(layer + 1);
        const QStringList below = layer < depth ? QStringList{"a" + next, "b" + next} : QStringList();
        for (const char *name : {"a", "b"})
            formulae.append(formulaNeeding(name + QString::number(layer), below));
    }
    return formulae;
}

} // namespace larkspur::test
