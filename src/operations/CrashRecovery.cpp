#include "operations/CrashRecovery.h"

#include "core/authorization/AskpassFiles.h"
#include "core/brew/BrewPathResolver.h"
#include "core/brew/BrewService.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/KegRollback.h"
#include "operations/oclp/CopyXattrsStub.h"
#include "operations/package/HeldPin.h"
#include "operations/package/MovedAside.h"

#include <QFileInfo>

namespace larkspur {

CrashRecovery::CrashRecovery(Parts parts)
    : m_parts(std::move(parts)) {}

Task<> CrashRecovery::run() {
    const std::optional<QString> brew = co_await m_parts.resolver.resolve();
    // Where the executable lies tells the prefix without asking it.
    const QString prefix = brew ? QFileInfo(QFileInfo(*brew).absolutePath()).absolutePath() : QString();
    const bool hasWork = m_parts.askpass.hasLeftover() || m_parts.rollback.hasUnfinished() ||
                         m_parts.kegs.hasLeftovers() || QFileInfo::exists(m_parts.movedAsideNote) ||
                         HeldPin::hasLeftover(m_parts.heldPinNote) || CopyXattrsStub::hasLeftover(prefix);
    if (!hasWork)
        co_return;
    auto session = co_await m_parts.brew.tryBeginOperation();
    if (!session)
        co_return;
    m_parts.askpass.removeLeftover();
    CopyXattrsStub::recover(prefix, m_parts.logger);
    MovedAside::recover(m_parts.movedAsideNote, m_parts.logger);
    co_await m_parts.kegs.sweep();
    if (m_parts.rollback.hasUnfinished())
        co_await m_parts.rollback.recover(&*session);
    co_await HeldPin::recover(m_parts.heldPinNote, {.session = &*session,
                                                    .context = {},
                                                    .prefix = prefix,
                                                    .noteFile = m_parts.movedAsideNote,
                                                    .logger = &m_parts.logger});
}

} // namespace larkspur
