#pragma once

#include "core/errors/BrewError.h"

#include <expected>

namespace larkspur {

/// What a function that can fail returns. Nothing public throws.
template <typename T>
using Result = std::expected<T, BrewError>;

} // namespace larkspur
