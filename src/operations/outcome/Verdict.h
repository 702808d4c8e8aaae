#pragma once

#include <QStringList>

namespace larkspur {

/// How an operation stands, judged from its output.
enum class OperationOutcome { Running, Succeeded, CompletedWithWarnings, Failed };

/// The outcome of an operation that has ended. Only what came after the last retry counts.
OperationOutcome outcomeOf(const QStringList &output);

} // namespace larkspur
