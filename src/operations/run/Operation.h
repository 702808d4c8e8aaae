#pragma once

#include "core/async/Task.h"
#include "operations/outcome/FailureSummary.h"
#include "operations/plan/OperationPlan.h"
#include "operations/run/LockedWork.h"
#include "operations/run/OperationReport.h"

#include <memory>

namespace larkspur {

/// One piece of work on what is installed, from the wish to the report. Each kind of work is a class of its
/// own in the folder of that work; who runs operations or shows them knows no kinds.
class Operation {
  public:
    virtual ~Operation() = default;

    /// As a person reads it: "Upgrading wget".
    virtual QString title() const = 0;
    /// The command line with which a person does the same; empty if no single one does.
    virtual QString terminalCommand() const { return {}; }
    /// How many packages will be touched, where that is known: for the progress bar.
    virtual std::optional<int> expectedSteps() const { return std::nullopt; }

    /// What is asked before it starts; nothing if there is nothing to decide.
    virtual std::optional<PlanQuestion> question() const { return std::nullopt; }
    /// What will happen, as far as Homebrew tells. Never fails: a plan that could not be made says why.
    virtual Task<OperationPlan> plan(StopToken) const { co_return OperationPlan(); }
    /// Somebody has seen this plan and agreed.
    virtual void agree(const OperationPlan &) {}

    /// The end of what needs no lock: there is nothing to do, or it makes no sense.
    virtual std::optional<OperationReport> endWithoutLock(const OutputSinkPtr &) const {
        return std::nullopt;
    }
    /// Does it. The operation outlives the task.
    virtual Task<OperationReport> perform(LockedWork work) = 0;

    /// What a person needs to know of a failure, above the output.
    virtual FailureSummary explain(const OperationReport &report, const QStringList &output) const {
        return summarizeFailure(report, output);
    }
};

/// Shared by who shows it and who runs it.
using OperationPtr = std::shared_ptr<Operation>;

} // namespace larkspur
