#pragma once

#include <QString>

namespace larkspur {

/// Whether a program of a keg lacks its link in the prefix, as when Homebrew is killed while it makes or
/// removes them: its record of what is linked is written last and removed last. A link that somebody has put
/// there instead, to another formula's program or to one of their own, is not missing. Blocking.
bool lacksPrograms(const QString &prefix, const QString &formula, const QString &version);

} // namespace larkspur
