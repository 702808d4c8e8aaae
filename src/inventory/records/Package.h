#pragma once

#include "inventory/records/Cask.h"
#include "inventory/records/Formula.h"

#include <QHash>

#include <variant>

namespace larkspur {

using Package = std::variant<Formula, Cask>;

/// What tells packages apart: a formula and a cask may share a name. `name` is the short name.
struct PackageId {
    QString name;
    bool isCask = false;

    bool operator==(const PackageId &) const = default;
};

inline size_t qHash(const PackageId &id, size_t seed = 0) {
    return qHashMulti(seed, id.name, id.isCask);
}

} // namespace larkspur
