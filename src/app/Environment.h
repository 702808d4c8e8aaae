#pragma once

#include "core/settings/Locations.h"
#include "platform/Platform.h"

#include <expected>
#include <memory>

namespace larkspur {

/// What the composition is made for: the person's own Homebrew or the sample one.
struct Environment {
    Locations locations;
    Platform platform; ///< its locations have gone into the ones above
};

/// The person's own Homebrew and files.
Environment userEnvironment();

/// A Homebrew of invented packages below `folder`, with data and preferences of its own. Made there if it is
/// missing; `fresh` replaces what is there. The error is one line of text.
std::expected<Environment, QString> sampleEnvironment(const QString &folder, bool fresh);

/// Where the sample stands unless another folder is named.
QString defaultSampleFolder();

} // namespace larkspur
