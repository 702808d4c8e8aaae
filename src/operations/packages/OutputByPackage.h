#pragma once

#include "operations/run/PackageTarget.h"

#include <QHash>
#include <QList>
#include <QStringList>

namespace larkspur {

/// The output of one command for several packages, taken apart: what stands under a package's heading, and
/// errors that name it wherever they stand, for Homebrew writes those to another stream. Keys are short
/// names. Linear in the output.
QHash<QString, QStringList> outputByPackage(const QList<PackageTarget> &packages, const QStringList &output);

} // namespace larkspur
