#include "operations/packages/RemovalOrder.h"

#include "core/brew/PackageName.h"
#include "inventory/queries/InventoryQueries.h"

#include <QHash>
#include <QSet>

#include <functional>

namespace larkspur {

Task<QList<PackageTarget>> inRemovalOrder(QList<PackageTarget> packages, InventoryQueries *queries,
                                          StopToken stop) {
    if (std::ranges::count(packages, false, &PackageTarget::isCask) < 2)
        co_return QList<PackageTarget>(packages);
    const auto formulae = co_await queries->installedFormulae(std::move(stop));
    if (!formulae)
        co_return QList<PackageTarget>(packages);
    QHash<QString, QStringList> needs;
    for (const Formula &formula : *formulae)
        for (const QString &dependency : formula.dependencies)
            needs[formula.name].append(shortName(dependency));
    // Depth first, each after all that it needs; turned round at the end.
    QList<PackageTarget> ordered;
    QSet<QString> seen;
    const std::function<void(const QString &)> visit = [&](const QString &name) {
        if (seen.contains(name))
            return;
        seen.insert(name);
        for (const QString &needed : needs.value(name))
            visit(needed);
        for (const PackageTarget &package : packages)
            if (!package.isCask && shortName(package.name) == name)
                ordered.prepend(package);
    };
    for (const PackageTarget &package : packages)
        if (!package.isCask)
            visit(shortName(package.name));
    for (const PackageTarget &package : packages)
        if (package.isCask)
            ordered.append(package);
    co_return QList<PackageTarget>(ordered);
}

} // namespace larkspur
