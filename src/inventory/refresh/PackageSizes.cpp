#include "inventory/refresh/PackageSizes.h"

#include "core/log/Logger.h"
#include "core/process/ShellExecutor.h"
#include "inventory/queries/InventoryQueries.h"

namespace larkspur {

namespace {

constexpr qsizetype foldersAtOnce = 100; // per process: few processes, and argument lists that fit everywhere

QHash<QString, PackageId> foldersOf(const Inventory &inventory, const QString &prefix) {
    QHash<QString, PackageId> folders;
    for (const Formula &formula : inventory.installedFormulae)
        folders.insert(prefix + QStringLiteral("/Cellar/") + formula.name, {formula.name, false});
    for (const Cask &cask : inventory.installedCasks)
        folders.insert(prefix + QStringLiteral("/Caskroom/") + cask.token, {cask.token, true});
    return folders;
}

} // namespace

PackageSizes::PackageSizes(ShellExecutor &shell, InventoryQueries &queries, InventoryState &state,
                           Logger &logger)
    : m_shell(shell)
    , m_queries(queries)
    , m_state(state)
    , m_logger(logger) {}

Task<> PackageSizes::measure(StopToken stop) {
    if (m_state.value().isLoadingPackageSizes)
        co_return;
    m_state.update([](Inventory &inventory) { inventory.isLoadingPackageSizes = true; });
    const QString root = co_await prefix(stop);
    const QHash<QString, PackageId> folders = foldersOf(m_state.value(), root);
    const QStringList paths = folders.keys();
    QHash<PackageId, qint64> sizes;
    for (qsizetype i = 0; i < paths.size() && !root.isEmpty() && !stop.stop_requested(); i += foldersAtOnce) {
        ShellCommand du{.program = QStringLiteral("du"),
                        .arguments = QStringList{QStringLiteral("-sk")} + paths.mid(i, foldersAtOnce),
                        .stop = stop};
        const ShellResult result = co_await m_shell.run(std::move(du));
        const auto measured = sizesFromDu(result.standardOutput());
        for (auto entry = measured.cbegin(); entry != measured.cend(); ++entry)
            if (const auto folder = folders.constFind(entry.key()); folder != folders.constEnd())
                sizes.insert(*folder, entry.value());
    }
    m_state.update([&](Inventory &inventory) {
        inventory.isLoadingPackageSizes = false;
        inventory.hasLoadedPackageSizes = !stop.stop_requested();
        inventory.packageInstalledSizes = std::move(sizes);
    });
}

Task<QString> PackageSizes::prefix(StopToken stop) {
    if (m_state.value().brewPrefix)
        co_return *m_state.value().brewPrefix;
    const auto answer = co_await m_queries.homebrewPrefix(std::move(stop));
    if (!answer)
        m_logger.error(QStringLiteral("[Larkspur] Failed to measure sizes: ") + answer.error().description());
    co_return answer.value_or(QString());
}

QHash<QString, qint64> sizesFromDu(const QString &output) {
    QHash<QString, qint64> sizes;
    for (const QString &line : output.split(QLatin1Char('\n'))) {
        const qsizetype tab = line.indexOf(QLatin1Char('\t'));
        bool isNumber = false;
        const qint64 kilobytes = line.left(tab).trimmed().toLongLong(&isNumber);
        if (tab > 0 && isNumber)
            sizes.insert(line.mid(tab + 1), kilobytes * 1024);
    }
    return sizes;
}

} // namespace larkspur
