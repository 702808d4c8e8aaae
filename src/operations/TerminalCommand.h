#pragma once

#include "operations/OperationRequest.h"

namespace larkspur {

/// The command line with which a person does the same in a terminal; with a placeholder where the name is
/// not known.
QString terminalCommand(const OperationRequest &request);

/// Whether the placeholder stands in it.
bool lacksPackageName(const QString &command);

} // namespace larkspur
