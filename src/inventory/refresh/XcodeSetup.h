#pragma once

#include <QString>

namespace larkspur {

/// True when Homebrew's text says that Xcode's build tools are missing or their licence is not accepted.
bool needsXcodeSetup(const QString &text);
/// The same for a query that has failed: only what Homebrew calls an error counts.
bool failsForXcode(const QString &text);

} // namespace larkspur
