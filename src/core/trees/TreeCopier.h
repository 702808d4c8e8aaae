#pragma once

#include "core/async/Task.h"

#include <QString>
#include <QStringList>

#include <expected>

namespace larkspur {

class ShellExecutor;

/// Copies folders with the system's own tool, which keeps permissions, links, times and extended attributes
/// and, where the file system can, shares the bytes with the original.
class TreeCopier {
  public:
    /// `tool`: program and options; source and target are added.
    TreeCopier(ShellExecutor &shell, QStringList tool);

    /// `to` must not exist. `keptOpen`: a descriptor that the copying tool holds as long as it lives. The
    /// error is one line of text; what was copied until then stays.
    Task<std::expected<void, QString>> copy(QString from, QString to, StopToken stop = {}, int keptOpen = -1);

  private:
    ShellExecutor &m_shell;
    QStringList m_tool;
};

} // namespace larkspur
