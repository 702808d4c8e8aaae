#pragma once

#include "core/lock/LockFile.h"

namespace larkspur {

/// Keeps other programs from changing a file for the moment of a change that starts from what the file holds.
/// Waits for as long as such moments last, blocking. `what`: the words for what is being changed. The error
/// is one line of text.
std::expected<LockFile, QString> lockForChange(const QString &path, const QString &what);

} // namespace larkspur
