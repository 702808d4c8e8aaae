#pragma once

#include "core/brew/PackageName.h"
#include "operations/casks/CaskSetting.h"

#include <expected>
#include <optional>

namespace larkspur {

/// Whether a reinstallation has replaced the application that belonged there: by one that is whole, or by one
/// under the name that the cask gives it now. What it has reported does not count. The error is one line of
/// text: this cannot be told. Blocking.
std::expected<bool, QString> isReplaced(const QString &place, const PackageName &token,
                                        const CaskSetting &setting);

/// What the person should know after an application was put back, where Homebrew has forgotten its cask and
/// would offer no update of it: one line. Blocking.
std::optional<QString> complaintIfForgotten(const PackageName &token, const CaskSetting &setting);

} // namespace larkspur
