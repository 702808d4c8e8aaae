#pragma once

#include "operations/run/OperationReport.h"

#include <QStringList>

namespace larkspur {

/// What a person needs to know of a failed operation, above its output.
struct FailureSummary {
    QString text;
    QString suggestion = {};    ///< what to do about it; may be empty
    QString commandToCopy = {}; ///< a command line to run in a terminal; may be empty
};

/// Speaks only of what failed, package by package, from its own lines. `output`: the operation's, for what no
/// package's lines tell.
FailureSummary summarizeFailure(const OperationReport &report, const QStringList &output);
/// The same of one package, whatever its end.
FailureSummary summarizeFailure(const PackageResult &result);
/// Of what says itself, in its output, what was in its way.
FailureSummary summarizeRollback(const OperationReport &report, const QStringList &output);

/// True when macOS has refused to let the program change another application.
bool isAppManagementBlock(const QString &output);

} // namespace larkspur
