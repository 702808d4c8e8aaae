#pragma once

#include <QtGlobal>

namespace larkspur {

/// The processes that descend from one child and have stayed in its group.
class ProcessGroup {
  public:
    explicit ProcessGroup(qint64 leader = 0)
        : m_leader(leader) {}

    qint64 id() const { return m_leader; }
    void terminate() const; ///< SIGTERM to all of them
    void kill() const;      ///< SIGKILL to all of them
    /// At least one of them is left, if only as a process of another user, or one that has ended unnoticed.
    bool isAlive() const;

  private:
    qint64 m_leader;
};

} // namespace larkspur
