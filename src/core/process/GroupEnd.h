#pragma once

#include "core/process/ProcessGroup.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <chrono>

namespace larkspur {

class Descendants;
class ProcessTable;

/// Brings a child's process group to its end, and with it what has moved to a session of its own: SIGTERM,
/// after a grace time SIGKILL, and then waits for those whom no signal ends: processes of another user, and
/// those that the kernel holds.
class GroupEnd : public QObject {
    Q_OBJECT
  public:
    GroupEnd(const ProcessTable &table, const Descendants &descendants, std::chrono::milliseconds grace);

    /// May be called again, for what the group has started since; the grace time goes on.
    void begin(ProcessGroup group);
    bool isUnderWay() const { return m_poll.isActive(); }

  Q_SIGNALS:
    /// Some are left in spite of everything; one line that says so. Once at most.
    void survived(const QString &line);
    /// Nobody is left.
    void ended();

  private:
    void look();
    bool hasGroupEnded();
    bool haveOthersEnded();
    bool isKillOverdue() const;
    void tell(const QList<qint64> &survivors);

    const ProcessTable &m_table;
    const Descendants &m_descendants;
    std::chrono::milliseconds m_grace;
    ProcessGroup m_group;
    QTimer m_poll;
    QDeadlineTimer m_graceEnds{QDeadlineTimer::Forever};
    QElapsedTimer m_sinceSearch;
    QSet<qint64> m_asked; ///< those outside the group that got their SIGTERM
    bool m_hasTold = false;
};

} // namespace larkspur
