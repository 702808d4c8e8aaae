#include "operations/installed/StateCheck.h"

#include <algorithm>

namespace larkspur {

namespace {

struct Versions {
    QStringList before;
    QStringList after;
};

QString listed(const QStringList &versions) {
    return versions.isEmpty() ? QStringLiteral("not there at all") : versions.join(QStringLiteral(", "));
}

/// Homebrew's version may carry a revision or a build that the list of outdated packages does not show.
bool contains(const QStringList &versions, const QString &wanted) {
    return std::ranges::any_of(versions, [&wanted](const QString &version) {
        return version == wanted || version.startsWith(wanted + QLatin1Char('_')) ||
               version.startsWith(wanted + QLatin1Char(','));
    });
}

QString upgradeComplaint(const PackageTarget &package, const Versions &versions) {
    const bool isThere = package.latestVersion.isEmpty() ? versions.after != versions.before
                                                         : contains(versions.after, package.latestVersion);
    if (isThere || versions.before.isEmpty())
        return versions.after.isEmpty() ? QStringLiteral("is not installed") : QString();
    return package.latestVersion.isEmpty() ? QStringLiteral("is unchanged: %1").arg(listed(versions.after))
                                           : QStringLiteral("is not at %1: what is there is %2")
                                                 .arg(package.latestVersion, listed(versions.after));
}

QString complaint(const OperationRequest &request, const PackageTarget &package, const Versions &versions,
                  bool isPinned) {
    switch (request.kind) {
    case OperationKind::Install:
    case OperationKind::Reinstall:
        return versions.after.isEmpty() ? QStringLiteral("is not installed") : QString();
    case OperationKind::Upgrade:
    case OperationKind::UpgradeAll:
        return package.isPinned && request.kind == OperationKind::UpgradeAll
                   ? QString()
                   : upgradeComplaint(package, versions);
    case OperationKind::Uninstall:
        return versions.after.isEmpty()
                   ? QString()
                   : QStringLiteral("is still installed: %1").arg(listed(versions.after));
    case OperationKind::Pin:
        return isPinned ? QString() : QStringLiteral("is not pinned");
    case OperationKind::Unpin:
        return isPinned ? QStringLiteral("is still pinned") : QString();
    case OperationKind::RestartService:
    case OperationKind::RollBack: // looks for itself
    case OperationKind::Restore:
        break;
    }
    return {};
}

} // namespace

QStringList stateWarnings(const OperationRequest &request, const QList<PackageTarget> &reportedDone,
                          const InstalledPackages &before, const InstalledPackages &after) {
    QStringList warnings;
    for (const PackageTarget &package : reportedDone) {
        const Versions versions{before.versions(package.name, package.isCask),
                                after.versions(package.name, package.isCask)};
        const QString text =
            complaint(request, package, versions, after.isPinned(package.name, package.isCask));
        if (!text.isEmpty())
            warnings.append(
                QStringLiteral("==> Warning: Homebrew reported success, but %1 %2.").arg(package.name, text));
    }
    return warnings;
}

} // namespace larkspur
