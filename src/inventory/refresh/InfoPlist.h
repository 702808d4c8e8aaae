#pragma once

#include <QString>

#include <optional>

namespace larkspur {

/// The versions that an application bundle's "Info.plist" states.
struct InfoPlist {
    std::optional<QString> shortVersion;
    std::optional<QString> buildVersion;
};

/// Reads an "Info.plist", XML or binary; nothing if it is missing, too large or no property list.
std::optional<InfoPlist> readInfoPlist(const QString &path);

} // namespace larkspur
