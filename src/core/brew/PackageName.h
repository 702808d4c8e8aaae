#pragma once

#include <QString>

namespace larkspur {

/// True for a name that may be given to brew: a formula name, a cask token or user/repo/name. Anything that
/// could be read as an option, a path or more than one word is refused.
bool isValidPackageName(const QString &name);

/// The last part of a tap-qualified name: what Cellar and Caskroom folders are called.
QString shortName(const QString &name);

} // namespace larkspur
