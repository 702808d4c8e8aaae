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

    enum class Presence {
        None,
        Own,     ///< at least one that may be signalled is left, if only as one that has ended unnoticed
        Foreign, ///< some are left, and none may be signalled: they are other users'. Some systems say so too
                 ///< where all have ended unnoticed.
    };
    Presence presence() const;

  private:
    qint64 m_leader;
};

} // namespace larkspur
