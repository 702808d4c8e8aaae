#include "operations/recovery/Leftover.h"

#include "core/log/Logger.h"

namespace larkspur {

void RecoveryWork::say(const QString &line) const {
    logger->info(QStringLiteral("[Larkspur] Recovery: ") + line);
    if (context.output)
        context.output->addLine(QStringLiteral("==> ") + line);
}

void RecoveryWork::warn(const QString &text) const {
    logger->error(QStringLiteral("[Larkspur] Recovery: ") + text);
    if (context.output)
        context.output->addLine(QStringLiteral("==> Warning: ") + text);
}

} // namespace larkspur
