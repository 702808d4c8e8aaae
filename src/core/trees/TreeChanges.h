#pragma once

#include <QString>

#include <expected>

namespace larkspur {

// Each works below `root` and follows no symbolic link on the way from there (`withoutLinks`), so that
// nothing outside is removed or moved, whatever somebody has put in the place of a folder. Blocking. Errors
// are one line of text.

/// Removes a folder and all in it, read-only folders too. Nothing to remove counts as removed.
std::expected<void, QString> removeTree(const QString &root, const QString &folder);

/// Makes the same tree a second time with hard links to the same files: at once, and at no cost in space.
/// Both must lie on one volume. After a failure what was made until then stays.
std::expected<void, QString> linkTree(const QString &root, const QString &from, const QString &to);

/// Moves a folder within its volume, making the parent of its new place.
std::expected<void, QString> moveTree(const QString &root, const QString &from, const QString &to);

} // namespace larkspur
