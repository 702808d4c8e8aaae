#pragma once

#include <QString>

namespace larkspur {

/// Text from outside as a terminal may print it. A terminal obeys control characters, so that a package's
/// description could write to the clipboard or clear the screen, and characters that turn the direction of
/// writing let a name read as another one. Each of them becomes U+FFFD: seen, and without effect. Line feeds
/// and tabs stay; the carriage return of a line end goes.
QString safeForTerminal(const QString &text);

/// The same for text that must stay on its line: line feeds and tabs become blanks.
QString safeForTerminalLine(const QString &text);

/// A JSON document with the same characters as \u escapes, where its writer left them as they are. Its
/// values stay equal.
QString safeJsonForTerminal(const QString &document);

} // namespace larkspur
