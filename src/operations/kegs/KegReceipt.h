#pragma once

#include "core/brew/PackageName.h"

#include <QString>

#include <optional>

namespace larkspur {

/// The mark in a keg's receipt that tells whether the person asked for the formula; nothing without a
/// receipt.
std::optional<bool> installedOnRequest(const QString &keg);
/// Sets it, if there is a receipt that says otherwise.
void setInstalledOnRequest(const QString &keg, bool isOnRequest);

/// The full name of a formula from outside the core tap, as its keg's receipt tells it; else nothing.
QString qualifiedName(const QString &keg, const PackageName &formula);

} // namespace larkspur
