#pragma once

#include <QString>

namespace larkspur {

/// True when the combined output of a failed command says that sudo wanted a password or rejected the one it
/// got.
bool showsPasswordFailure(const QString &output);

} // namespace larkspur
