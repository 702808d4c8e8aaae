#pragma once

#include <QString>

namespace larkspur {

/// A package's caveats with real paths in the place of Homebrew's placeholders. Without a prefix they stay.
QString caveatsText(QString caveats, const QString &brewPrefix);

} // namespace larkspur
