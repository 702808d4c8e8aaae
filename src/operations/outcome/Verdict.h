#pragma once

#include <QStringList>

namespace larkspur {

/// How an operation stands.
enum class OperationOutcome { Running, Succeeded, CompletedWithWarnings, Failed };

/// What the output says of a run that has ended. Only what came after the last retry counts.
OperationOutcome outcomeOf(const QStringList &output);
/// Whether it warns of something, retries or not.
bool hasWarnings(const QStringList &output);

} // namespace larkspur
