#pragma once

#include <QString>

#include <expected>

namespace larkspur {

class Trash;

/// A bundle of its own, not something that a link leads to.
bool isBundle(const QString &path);

/// Anything at all, a link that leads nowhere too.
bool isOccupied(const QString &path);

/// In one step; never onto something that is there.
bool moveToFreePlace(const QString &from, const QString &to);

/// Moves it to the trash. The error is one line of text; it is then where it was. Blocking.
std::expected<void, QString> throwAway(const QString &path, Trash &trash);

/// Returns an application to its place from where it was kept; what stands there goes to the trash. The error
/// is one line of text; it is then still where it was kept. Blocking.
std::expected<void, QString> returnToPlace(const QString &place, const QString &kept, Trash &trash);

} // namespace larkspur
