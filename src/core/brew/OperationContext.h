#pragma once

#include "core/async/Task.h"
#include "core/output/OutputSink.h"

#include <QString>

#include <chrono>
#include <functional>

namespace larkspur {

class SudoAuth;

/// What an operation needs of its caller: where its output goes, how it is asked to end early, and who hears
/// that Homebrew has been silent for long.
struct OperationContext {
    OutputSinkPtr output;
    StopToken stop = {};
    /// Asked for by a person who does not wait for what puts things right either. What is not put right then
    /// is put right before the next operation.
    StopToken insist = {};
    /// A brew that has printed nothing for this long is ended; zero: never.
    std::chrono::milliseconds silenceLimit{0};
    /// Who asks for the administrator password; without one an operation that needs it ends as if the person
    /// had cancelled. Outlives the operation.
    SudoAuth *sudoAuth = nullptr;
    std::function<void(std::chrono::seconds)> onSilence = {};
    /// Called when the next package of a batch begins: its name, how many lie behind, how many there are.
    std::function<void(const QString &, int, int)> onPackage = {};
    /// Whether redraws of progress are welcome; a pipe to another program wants lines that stay.
    bool wantsRedraws = true;

    /// For what finishes, undoes or puts right: it does not end with the operation, only where somebody
    /// insists or brew hangs.
    OperationContext repairing() const {
        OperationContext repair = *this;
        repair.stop = insist;
        repair.silenceLimit = std::chrono::minutes(10);
        return repair;
    }
};

} // namespace larkspur
