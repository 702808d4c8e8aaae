#include "operations/outcome/Verdict.h"

#include <algorithm>

namespace larkspur {

namespace {

QStringList relevantLines(const QStringList &output) {
    for (qsizetype i = output.size() - 1; i >= 0; --i)
        if (output[i].contains(QLatin1String("Retrying with your password")) ||
            output[i].contains(QLatin1String("Retrying with --force")))
            return output.mid(i + 1);
    return output;
}

bool contains(const QString &line, const char *text) {
    return line.contains(QLatin1String(text), Qt::CaseInsensitive);
}

bool isWarning(const QString &line) {
    if (contains(line, "already installed"))
        return true;
    return contains(line, "warning:") && !contains(line, "skipping") && !contains(line, "not installed") &&
           !contains(line, "overwriting");
}

} // namespace

OperationOutcome outcomeOf(const QStringList &output) {
    const QStringList lines = relevantLines(output);
    const auto anyLine = [&lines](const char *text) {
        return std::ranges::any_of(lines, [text](const QString &line) { return contains(line, text); });
    };
    if ((anyLine("sudo:") && anyLine("password")) || anyLine("error:") || anyLine("fatal:"))
        return OperationOutcome::Failed;
    return std::ranges::any_of(lines, isWarning) ? OperationOutcome::CompletedWithWarnings
                                                 : OperationOutcome::Succeeded;
}

} // namespace larkspur
