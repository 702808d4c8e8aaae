#include "operations/recovery/FileLeftovers.h"

#include "core/authorization/AskpassFiles.h"
#include "core/files/AtomicFile.h"

#include <algorithm>

namespace larkspur {

bool SecretLeftover::exists(const QString &) const {
    return m_files.hasLeftover();
}

Task<> SecretLeftover::putRight(LockedWork) {
    m_files.removeLeftover();
    co_return;
}

bool UnfinishedFilesLeftover::exists(const QString &) const {
    return std::ranges::any_of(m_folders, hasUnfinishedFiles);
}

Task<> UnfinishedFilesLeftover::putRight(LockedWork) {
    std::ranges::for_each(m_folders, removeUnfinishedFiles);
    co_return;
}

} // namespace larkspur
