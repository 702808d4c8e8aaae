#pragma once

#include <QString>

#include <expected>

namespace larkspur {

/// Whether a path leads from a folder to what lies below it without a symbolic link, the last name included:
/// what a link leads to is somebody's own. The folder itself may be reached through links. The error is one
/// line of text that names the link. What is not there yet is no link.
std::expected<void, QString> withoutLinks(const QString &root, const QString &path);

} // namespace larkspur
