#include "core/process/ProcessGroup.h"

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
    return m_leader > 0 && ::killpg(static_cast<pid_t>(m_leader), 0) == 0;
}

} // namespace larkspur
