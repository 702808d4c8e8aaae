#pragma once

#include "core/trees/TreeScan.h"
#include "operations/kegs/KegEntry.h"
#include "operations/kegs/KegPlaces.h"

namespace larkspur {

/// What a copy says of itself: its list of files that it is whole, its receipt what it is called. Nothing if
/// it is not whole.
std::optional<KegEntry> entryOfCopy(const KegPlaces &places, const KegPlaces::Copy &copy);

/// Whether the copy still holds what was preserved, to the byte. The error says why not, in one line of text.
std::expected<void, QString> checkCopy(const KegPlaces &places, const KegPlaces::Copy &copy);

/// The same for a folder and the list that is to be of its files.
std::expected<void, QString> checkFiles(const QString &folder, const QString &manifest);

/// What the copy takes on the disk, measured; 0 for one that a link leads to or that cannot be read.
qint64 bytesOfCopy(const KegPlaces &places, const KegPlaces::Copy &copy);

} // namespace larkspur
