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

struct Finding {
    QString text = {};
    bool hasNotHappened = false;
};

Finding unless(bool isSo, const QString &text) {
    return isSo ? Finding() : Finding{text, true};
}

Finding upgradeFinding(const PackageTarget &package, const Versions &versions) {
    const bool isThere = package.latestVersion.isEmpty() ? versions.after != versions.before
                                                         : contains(versions.after, package.latestVersion);
    if (isThere || versions.before.isEmpty() || versions.after.isEmpty())
        return unless(!versions.after.isEmpty(), QStringLiteral("is not installed"));
    return {package.latestVersion.isEmpty() ? QStringLiteral("is unchanged: %1").arg(listed(versions.after))
                                            : QStringLiteral("is not at %1: what is there is %2")
                                                  .arg(package.latestVersion, listed(versions.after))};
}

Finding finding(const OperationRequest &request, const PackageTarget &package, const Versions &versions,
                bool isPinned) {
    switch (request.kind) {
    case OperationKind::Install:
    case OperationKind::Reinstall:
        return unless(!versions.after.isEmpty(), QStringLiteral("is not installed"));
    case OperationKind::Upgrade:
    case OperationKind::UpgradeAll:
        return package.isPinned && request.kind == OperationKind::UpgradeAll
                   ? Finding()
                   : upgradeFinding(package, versions);
    case OperationKind::Uninstall:
        return unless(versions.after.isEmpty(),
                      QStringLiteral("is still installed: %1").arg(listed(versions.after)));
    case OperationKind::Pin:
        return unless(isPinned, QStringLiteral("is not pinned"));
    case OperationKind::Unpin:
        return unless(!isPinned, QStringLiteral("is still pinned"));
    case OperationKind::RestartService:
    case OperationKind::RollBack: // looks for itself
    case OperationKind::Restore:
        break;
    }
    return {};
}

} // namespace

std::optional<StateComplaint> stateComplaint(const OperationRequest &request, const PackageTarget &package,
                                             const InstalledPackages &before,
                                             const InstalledPackages &after) {
    const Versions versions{before.versions(package.name, package.isCask),
                            after.versions(package.name, package.isCask)};
    const Finding found = finding(request, package, versions, after.isPinned(package.name, package.isCask));
    if (found.text.isEmpty())
        return std::nullopt;
    return StateComplaint{
        QStringLiteral("==> Warning: Homebrew reported success, but %1 %2.").arg(package.name, found.text),
        found.hasNotHappened};
}

} // namespace larkspur
