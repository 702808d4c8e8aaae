#pragma once

#include "operations/OperationRequest.h"

namespace larkspur {

/// Why the password is asked for, as the prompt shows it.
QString passwordReason(const OperationRequest &request, const PackageTarget &package);

/// The line for the output when the person does not give it.
QString cancelledLine(const OperationRequest &request, const PackageTarget &package);

} // namespace larkspur
