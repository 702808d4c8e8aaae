#pragma once

#include "core/authorization/PasswordRequest.h"
#include "operations/OperationRequest.h"

namespace larkspur {

/// The question for the password that a command of the operation has led to. `trigger`: the line of its
/// output.
PasswordRequest passwordRequest(const OperationRequest &request, const PackageTarget &package,
                                const QStringList &command, QString trigger);

/// The line for the output when the person does not give it. `hasRun`: with an earlier one, so that something
/// may have been changed.
QString cancelledLine(const OperationRequest &request, const PackageTarget &package, bool hasRun);

} // namespace larkspur
