#include "operations/installed/StateCheck.h"

#include <algorithm>

namespace larkspur {

namespace {

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

StateFinding unless(bool isSo, const QString &text) {
    return isSo ? StateFinding() : StateFinding{text, true};
}

} // namespace

PackageState PackageState::of(const PackageTarget &package, const InstalledPackages &before,
                              const InstalledPackages &after) {
    return {before.versions(package.name, package.isCask), after.versions(package.name, package.isCask),
            after.isPinned(package.name, package.isCask)};
}

StateFinding unlessInstalled(const PackageState &state) {
    return unless(!state.versions.isEmpty(), QStringLiteral("is not installed"));
}

StateFinding unlessUpgraded(const PackageTarget &package, const PackageState &state) {
    const bool isThere = package.latestVersion.isEmpty() ? state.versions != state.versionsBefore
                                                         : contains(state.versions, package.latestVersion);
    const bool hasNoNumber = state.versions.contains(QStringLiteral("latest")); // whatever is the newest
    if (isThere || hasNoNumber || state.versionsBefore.isEmpty() || state.versions.isEmpty())
        return unlessInstalled(state);
    return {package.latestVersion.isEmpty() ? QStringLiteral("is unchanged: %1").arg(listed(state.versions))
                                            : QStringLiteral("is not at %1: what is there is %2")
                                                  .arg(package.latestVersion, listed(state.versions))};
}

StateFinding unlessRemoved(const PackageState &state) {
    return unless(state.versions.isEmpty(),
                  QStringLiteral("is still installed: %1").arg(listed(state.versions)));
}

StateFinding unlessPinned(const PackageState &state) {
    return unless(state.isPinned, QStringLiteral("is not pinned"));
}

StateFinding unlessUnpinned(const PackageState &state) {
    return unless(!state.isPinned, QStringLiteral("is still pinned"));
}

} // namespace larkspur
