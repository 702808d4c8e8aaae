#include "core/process/ProcessGroup.h"

#include <cerrno>
#include <csignal>

namespace larkspur {

void ProcessGroup::terminate() const {
    if (m_leader > 0)
        ::killpg(static_cast<pid_t>(m_leader), SIGTERM);
}

void ProcessGroup::kill() const {
    if (m_leader > 0)
        ::killpg(static_cast<pid_t>(m_leader), SIGKILL);
}

bool ProcessGroup::isAlive() const {
    // Not permitted to signal them: they are there all the same.
    return m_leader > 0 && (::killpg(static_cast<pid_t>(m_leader), 0) == 0 || errno == EPERM);
}

} // namespace larkspur
