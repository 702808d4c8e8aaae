#include "operations/run/LockedWork.h"

#include "core/log/Logger.h"

namespace larkspur {

void LockedWork::say(const QString &line) const {
    logger->info(QStringLiteral("[Larkspur] ") + line);
    if (context.output)
        context.output->addLine(QStringLiteral("==> ") + line);
}

void LockedWork::warn(const QString &text) const {
    logger->error(QStringLiteral("[Larkspur] ") + text);
    if (context.output)
        context.output->addLine(QStringLiteral("==> Warning: ") + text);
}

LockedWork LockedWork::repairing() const {
    LockedWork repair = *this;
    repair.context = context.repairing();
    return repair;
}

} // namespace larkspur
