#pragma once

#include "operations/kegs/RollbackNote.h"

#include <QStringList>

#include <expected>

namespace larkspur {

// What the disk says of a rollback under way. Blocking. Errors are one line of text.

/// Everything that is removed or moved lies in the prefix, and not where a link in it leads.
std::expected<void, QString> checkPlaces(const RollbackNote &note);

/// Gives the formula the link in opt that Homebrew's link command does not make for a keg-only one.
void makeOptLink(const RollbackNote &note, const QString &version);

/// Whether the formula is at the version that the rollback leads to, with its links.
bool isInUse(const RollbackNote &note);
/// Whether it has its links as before the rollback, to a version from before or one installed since.
bool hasItsLinks(const RollbackNote &note);
/// Whether some of its links are gone although Homebrew's record says that it is linked.
bool isHalfLinked(const RollbackNote &note);
/// Whether it is pinned if it was.
bool hasItsPin(const RollbackNote &note);

/// Removes what lies in the rollback's own folder. What lies aside goes in one step first, so that half of
/// it is never taken for the whole.
void clearWorkFolder(const RollbackNote &note);
/// The same without what lies aside.
void clearAllButAside(const RollbackNote &note);

/// What an interrupted rollback has left.
struct RollbackRemains {
    QStringList installed; ///< versions in the Cellar
    QStringList aside;     ///< versions that lie aside
    bool isStaged = false; ///< the preserved keg has not come to its place

    static std::expected<RollbackRemains, QString> of(const RollbackNote &note);

    /// Installed versions that are neither from before nor the rollback's: somebody has installed them
    /// since.
    QStringList installedSince(const RollbackNote &note) const;
};

} // namespace larkspur
