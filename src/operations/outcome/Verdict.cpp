#include "operations/outcome/Verdict.h"

#include "core/output/PhraseSet.h"

#include <algorithm>

namespace larkspur {

namespace {

enum Phrase {
    Sudo,
    Password,
    Error,
    Fatal,
    Warning,
    AlreadyInstalled,
    Skipping,
    NotInstalled,
    Overwriting,
    RetryingWithPassword,
    RetryingWithForce,
};

const PhraseSet &phrases() {
    static const PhraseSet set{"sudo:",
                               "password",
                               "error:",
                               "fatal:",
                               "warning:",
                               "already installed",
                               "skipping",
                               "not installed",
                               "overwriting",
                               "retrying with your password",
                               "retrying with --force"};
    return set;
}

bool has(PhraseSet::Found found, Phrase phrase) {
    return (found & PhraseSet::bit(phrase)) != 0;
}

bool isWarning(PhraseSet::Found line) {
    return has(line, AlreadyInstalled) || (has(line, Warning) && !has(line, Skipping) &&
                                           !has(line, NotInstalled) && !has(line, Overwriting));
}

/// Only what came after the last of these lines counts.
bool beginsRetry(PhraseSet::Found found, const QString &line) {
    return (has(found, RetryingWithPassword) &&
            line.contains(QLatin1String("Retrying with your password"))) ||
           (has(found, RetryingWithForce) && line.contains(QLatin1String("Retrying with --force")));
}

} // namespace

bool hasWarnings(const QStringList &output) {
    return std::ranges::any_of(output, [](const QString &line) { return isWarning(phrases().in(line)); });
}

OperationOutcome outcomeOf(const QStringList &output) {
    PhraseSet::Found all = 0;
    bool hasWarning = false;
    for (const QString &line : output) {
        const PhraseSet::Found found = phrases().in(line);
        if (found == 0)
            continue;
        if (beginsRetry(found, line)) {
            all = 0;
            hasWarning = false;
            continue;
        }
        all |= found;
        hasWarning = hasWarning || isWarning(found);
    }
    if ((has(all, Sudo) && has(all, Password)) || has(all, Error) || has(all, Fatal))
        return OperationOutcome::Failed;
    return hasWarning ? OperationOutcome::CompletedWithWarnings : OperationOutcome::Succeeded;
}

} // namespace larkspur
