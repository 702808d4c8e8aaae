#include "operations/PackageOperations.h"

#include "core/brew/PackageName.h"
#include "operations/PackageCommands.h"

#include <algorithm>

namespace larkspur {

namespace {

/// How each package of a batch removal ended, for the eyes of a person: Homebrew itself says little there.
QString removalLine(const PackageTarget &package, const ShellResult &result) {
    return result.exitCode == 0 ? QStringLiteral("Successfully uninstalled ") + package.name
                                : QStringLiteral("Error uninstalling ") + package.name;
}

bool refusesAdoptWithForce(const ShellResult &result) {
    return result.exitCode != 0 && result.combinedOutput().contains(
                                       QLatin1String("Options --adopt and --force are mutually exclusive"));
}

} // namespace

Task<Result<OperationReport>> PackageOperations::perform(OperationRequest request, OperationContext context,
                                                         std::function<void()> onBegin) {
    const auto refused = std::ranges::find_if_not(request.packages, isValidPackageName, &PackageTarget::name);
    if (refused != request.packages.end())
        co_return std::unexpected(BrewError::packageNotFound(refused->name));
    auto session = co_await m_brew.beginOperation(context);
    if (!session)
        co_return std::unexpected(session.error());
    if (onBegin)
        onBegin();
    if (request.kind == OperationKind::UpgradeAll)
        request.packages = {PackageTarget{}};
    co_return co_await performBatch(std::move(*session), std::move(request), std::move(context));
}

Task<Result<OperationReport>> PackageOperations::performBatch(BrewSession session, OperationRequest request,
                                                              OperationContext context) {
    OperationReport report;
    const bool isBatch = request.packages.size() > 1;
    for (qsizetype i = 0; i < request.packages.size(); ++i) {
        const PackageTarget package = request.packages[i];
        if (isBatch && context.output)
            context.output->addLine(
                QStringLiteral("==> %1 %2").arg(operationVerb(request.kind), package.name));
        if (isBatch && context.onPackage)
            context.onPackage(package.name, static_cast<int>(i), static_cast<int>(request.packages.size()));
        auto result = co_await session.stream({.arguments = brewArguments(request, package)}, context,
                                              streamStyle(request.kind));
        if (result && refusesAdoptWithForce(*result)) {
            OperationRequest forced = request;
            forced.adopt = false;
            if (context.output)
                context.output->addLine(QStringLiteral("==> This Homebrew does not adopt and force at once. "
                                                       "Retrying with --force…"));
            result = co_await session.stream({.arguments = brewArguments(forced, package)}, context,
                                             streamStyle(request.kind));
        }
        if (!result)
            co_return std::unexpected(result.error());
        report.failedPackages += result->exitCode == 0 ? 0 : 1;
        if (isBatch && request.kind == OperationKind::Uninstall && context.output)
            context.output->addLine(removalLine(package, *result));
    }
    co_return report;
}

} // namespace larkspur
