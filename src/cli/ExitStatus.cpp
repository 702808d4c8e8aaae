#include "cli/ExitStatus.h"

namespace larkspur::cli {

ExitStatus statusFor(const BrewError &error) {
    return error.kind == BrewError::Kind::BrewNotInstalled ? ExitStatus::NoHomebrew : ExitStatus::Failed;
}

ExitStatus statusFor(OperationOutcome outcome) {
    switch (outcome) {
    case OperationOutcome::Succeeded:
        return ExitStatus::Done;
    case OperationOutcome::CompletedWithWarnings:
        return ExitStatus::DoneWithWarnings;
    case OperationOutcome::Running:
    case OperationOutcome::Failed:
        break;
    }
    return ExitStatus::Failed;
}

} // namespace larkspur::cli
