#include "core/process/GroupEnd.h"

#include "core/process/Descendants.h"
#include "core/process/ProcessTable.h"

#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace larkspur {

using namespace std::chrono_literals;

namespace {

constexpr auto poll = 50ms;      // no system tells when the last of a group has gone
constexpr auto slowPoll = 500ms; // once nothing is left but to wait
constexpr auto killTakes = 1s;   // longest time in which a killed process is expected to be gone

bool isForeign(qint64 process) {
    return ::kill(static_cast<pid_t>(process), 0) != 0 && errno == EPERM;
}

} // namespace

GroupEnd::GroupEnd(const ProcessTable &table, const Descendants &descendants, std::chrono::milliseconds grace)
    : m_table(table)
    , m_descendants(descendants)
    , m_grace(grace) {
    connect(&m_poll, &QTimer::timeout, this, &GroupEnd::look);
}

void GroupEnd::begin(ProcessGroup group) {
    m_group = group;
    m_group.terminate();
    if (m_graceEnds.isForever())
        m_graceEnds.setRemainingTime(m_grace);
    m_poll.start(poll);
}

void GroupEnd::look() {
    if (!hasGroupEnded() || !haveOthersEnded())
        return;
    m_poll.stop();
    Q_EMIT ended();
}

bool GroupEnd::hasGroupEnded() {
    const auto presence = m_group.presence();
    if (presence == ProcessGroup::Presence::None)
        return true;
    if (!m_graceEnds.hasExpired())
        return false;
    m_group.kill(); // each time: there may be new ones
    if (!isKillOverdue())
        return false;
    const auto members = m_table.membersOf(m_group.id()).value_or(GroupMembers());
    // They have ended, and nobody takes note of it. That other users' are not listed proves nothing: the
    // list may leave them out.
    if (members.running.isEmpty() && (presence == ProcessGroup::Presence::Own || members.hasEnded))
        return true;
    if (!m_hasTold)
        tell(members.running);
    return false;
}

bool GroupEnd::haveOthersEnded() {
    if (!m_descendants.areLeft())
        return true;
    // Whoever is looked for among all processes is not looked for at each turn.
    if (m_sinceSearch.isValid() && m_sinceSearch.elapsed() < std::chrono::milliseconds(slowPoll).count())
        return false;
    m_sinceSearch.start();
    const QList<qint64> others = m_table.holdersOf(m_descendants.descriptor());
    for (const qint64 process : others) {
        if (m_graceEnds.hasExpired())
            ::kill(static_cast<pid_t>(process), SIGKILL);
        else if (!m_asked.contains(process))
            ::kill(static_cast<pid_t>(process), SIGTERM);
        m_asked.insert(process);
    }
    if (!m_hasTold && isKillOverdue())
        tell(others);
    return false;
}

bool GroupEnd::isKillOverdue() const {
    return QDeadlineTimer::current() >= m_graceEnds + std::chrono::milliseconds(killTakes).count();
}

void GroupEnd::tell(const QList<qint64> &survivors) {
    m_hasTold = true;
    m_poll.start(slowPoll);
    QStringList names;
    for (const qint64 process : survivors)
        names.append(QString::number(process));
    const QString ids = names.isEmpty() ? QString() : QStringLiteral(" (PID %1)").arg(names.join(u", "));
    // Who is left and not listed is another user's as well: only those may be hidden.
    const bool isForeigners = names.isEmpty() || std::ranges::any_of(survivors, isForeign);
    const QString text = isForeigners
                             ? QStringLiteral("==> Warning: A process that this operation has started as "
                                              "another user is still running%1; waiting for it to end…")
                             : QStringLiteral("==> Warning: A process that this operation has started cannot "
                                              "be ended%1; waiting for it to end…");
    Q_EMIT survived(text.arg(ids));
}

} // namespace larkspur
