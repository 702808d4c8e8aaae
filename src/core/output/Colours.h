#pragma once

#include <QString>

namespace larkspur {

/// The text without colour escape sequences.
QString withoutColours(QString text);

} // namespace larkspur
