#pragma once

#include "operations/packages/PackageCommand.h"

namespace larkspur {

/// The command line with which a person does the same in a terminal; with a placeholder where a name is none.
QString terminalCommand(const PackageCommand &command, const QList<PackageTarget> &packages);

/// Whether the placeholder stands in it.
bool lacksPackageName(const QString &command);

} // namespace larkspur
