#include "operations/run/OperationReport.h"

#include <algorithm>

namespace larkspur {

int OperationReport::count(PackageEnd end) const {
    return static_cast<int>(std::ranges::count(packages, end, &PackageResult::end));
}

int OperationReport::countDone() const {
    return static_cast<int>(std::ranges::count_if(packages, &PackageResult::isDone));
}

bool OperationReport::wasCancelled() const {
    return !failure && !packages.isEmpty() && count(PackageEnd::Cancelled) == packages.size();
}

OperationOutcome OperationReport::outcome() const {
    if (failure || countDone() != packages.size())
        return OperationOutcome::Failed;
    return hasWarnings || count(PackageEnd::DoneWithWarnings) > 0 ? OperationOutcome::CompletedWithWarnings
                                                                  : OperationOutcome::Succeeded;
}

QString OperationReport::tally() const {
    QStringList parts;
    const auto add = [&parts](int number, const QString &word) {
        if (number > 0)
            parts.append(QStringLiteral("%1 %2").arg(number).arg(word));
    };
    add(countDone(), QStringLiteral("done"));
    add(count(PackageEnd::Failed), QStringLiteral("failed"));
    add(count(PackageEnd::Cancelled), QStringLiteral("cancelled"));
    add(count(PackageEnd::Stopped), QStringLiteral("stopped"));
    return parts.join(QStringLiteral(", "));
}

} // namespace larkspur
