#pragma once

#include <QString>

#include <expected>

namespace larkspur {

/// Removes a folder and all in it, read-only folders too. Blocking. False if something is left; nothing to
/// remove counts as removed.
bool removeTree(const QString &folder);

/// Makes the same tree a second time with hard links to the same files: at once, and at no cost in space.
/// Both must lie on one volume. Blocking. The error is one line of text; what was made until then stays.
std::expected<void, QString> linkTree(const QString &from, const QString &to);

/// Moves a folder within its volume, making the parent of its new place.
bool moveTree(const QString &from, const QString &to);

} // namespace larkspur
