#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace larkspur {

enum class OperationKind {
    Install,
    Upgrade,
    UpgradeAll,
    Reinstall,
    Uninstall,
    Pin,
    Unpin,
    RestartService, ///< of formulae
    RollBack,       ///< of formulae, each to its `latestVersion`, from its preserved keg
    Restore,        ///< of a restore point
};

/// A package as it is named to brew: tap-qualified where that is needed.
struct PackageTarget {
    QString name;
    bool isCask = false;
    QString installedVersion = {}; ///< empty where unknown
    QString latestVersion = {};    ///< empty where unknown
    bool isPinned = false;         ///< to be unpinned for an upgrade and pinned again

    bool operator==(const PackageTarget &) const = default;
};

/// "Upgrading" and the like.
QString operationVerb(OperationKind kind);

/// What of a restore the person has seen and agreed to.
struct RestoreAgreement {
    QStringList taps = {};
    QList<PackageTarget> installs = {};
    QList<PackageTarget> removals = {};
    QList<PackageTarget> rollbacks = {};
};

/// Which restore point is to be restored, and how far.
struct RestoreOrder {
    QUuid snapshot;
    bool removesAdded = false;      ///< also removes what was installed since
    bool rollsBackVersions = false; ///< also takes formulae back to their versions of then
    /// Nothing else is done than this, whatever has become of the packages since it was shown; without it
    /// there was nobody to be shown anything, and all that is found is done.
    std::optional<RestoreAgreement> agreed = std::nullopt;
};

/// What is to be done with which packages.
struct OperationRequest {
    OperationKind kind = OperationKind::Install;
    /// For the upgrade of all: what is expected to be upgraded, where that is known.
    QList<PackageTarget> packages = {};
    bool adopt = false; ///< install of casks: take over an application that is there already
    bool force = false; ///< install of casks: replace what is in the way
    /// Upgrade of casks: by a reinstallation, for machines on which Homebrew cannot copy extended attributes.
    bool reinstallsCasks = false;
    std::optional<RestoreOrder> restore = std::nullopt;
    /// Formulae that the upgrade will replace, dependencies and dependents included, where somebody has asked
    /// Homebrew already.
    std::optional<QStringList> replacedFormulae = std::nullopt;
    /// Number of packages that will be touched, where known: for the progress bar.
    std::optional<int> expectedSteps = std::nullopt;

    bool isUpgrade() const { return kind == OperationKind::Upgrade || kind == OperationKind::UpgradeAll; }

    /// What a person reads as the operation's name, such as "Upgrading wget".
    QString title() const;
};

/// Upgrades what is outdated: with Homebrew's own command for everything, or, where something else is
/// outdated that is to be left alone, by naming each package that is not pinned.
OperationRequest upgradeOfAll(const QList<PackageTarget> &outdated, bool leavesSomeOut);

} // namespace larkspur
