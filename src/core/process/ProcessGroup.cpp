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

ProcessGroup::Presence ProcessGroup::presence() const {
    if (m_leader <= 0)
        return Presence::None;
    if (::killpg(static_cast<pid_t>(m_leader), 0) == 0)
        return Presence::Own;
    return errno == EPERM ? Presence::Foreign : Presence::None;
}

} // namespace larkspur
