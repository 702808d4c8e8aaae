#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace larkspur {

enum class OperationKind { Install, Upgrade, UpgradeAll, Reinstall, Uninstall, Pin, Unpin };

/// A package as it is named to brew: tap-qualified where that is needed.
struct PackageTarget {
    QString name;
    bool isCask = false;

    bool operator==(const PackageTarget &) const = default;
};

/// "Upgrading" and the like.
QString operationVerb(OperationKind kind);

/// What is to be done with which packages.
struct OperationRequest {
    OperationKind kind = OperationKind::Install;
    QList<PackageTarget> packages = {}; ///< empty for the upgrade of all
    bool adopt = false;                 ///< install of casks: take over an application that is there already
    bool force = false;                 ///< install of casks: replace what is in the way
    /// Number of packages that will be touched, where known: for the progress bar.
    std::optional<int> expectedSteps = std::nullopt;

    /// What a person reads as the operation's name, such as "Upgrading wget".
    QString title() const;
};

} // namespace larkspur
