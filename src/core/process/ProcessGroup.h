#pragma once

#include <QtGlobal>

namespace larkspur {

/// The processes that descend from one child and have stayed in its group.
class ProcessGroup {
  public:
    explicit ProcessGroup(qint64 leader = 0)
        : m_leader(leader) {}

    void terminate() const; ///< SIGTERM to all of them
    void kill() const;      ///< SIGKILL to all of them
    bool isAlive() const;   ///< at least one of them is left

  private:
    qint64 m_leader;
};

} // namespace larkspur
