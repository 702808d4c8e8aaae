#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace larkspur {

/// Who belongs to a process group, as far as the system tells: it may hide processes of other users.
struct GroupMembers {
    QList<qint64> running = {};
    /// One at least has ended, and nobody has asked about it since.
    bool hasEnded = false;
};

/// Port: the system's list of processes.
class ProcessTable {
  public:
    virtual ~ProcessTable() = default;

    /// Nothing where there is no such list.
    virtual std::optional<GroupMembers> membersOf(qint64 group) const = 0;

    /// Who else has open what this process has open under `descriptor`: the same file, or an end of the same
    /// pipe. Processes of other users are left out where the system does not tell about them.
    virtual QList<qint64> holdersOf(int descriptor) const = 0;

    /// The name of its program; empty if there is no such process.
    virtual QString nameOf(qint64 process) const = 0;
};

/// Where there is no such list.
class NullProcessTable final : public ProcessTable {
  public:
    std::optional<GroupMembers> membersOf(qint64) const override { return std::nullopt; }
    QList<qint64> holdersOf(int) const override { return {}; }
    QString nameOf(qint64) const override { return {}; }
};

} // namespace larkspur
