#pragma once

#include "core/process/ProcessTable.h"

namespace larkspur {

/// What the kernel shows below /proc.
class ProcProcessTable final : public ProcessTable {
  public:
    std::optional<GroupMembers> membersOf(qint64 group) const override;
    QList<qint64> holdersOf(int descriptor) const override;
    QString nameOf(qint64 process) const override;
};

} // namespace larkspur
