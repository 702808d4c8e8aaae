#include "core/trees/TreeCopier.h"

#include "core/process/ShellExecutor.h"

#include <QDir>
#include <QFileInfo>

namespace larkspur {

TreeCopier::TreeCopier(ShellExecutor &shell, QStringList tool)
    : m_shell(shell)
    , m_tool(std::move(tool)) {}

Task<std::expected<void, QString>> TreeCopier::copy(QString from, QString to, StopToken stop, int keptOpen) {
    QDir().mkpath(QFileInfo(to).absolutePath());
    ShellCommand command{.program = m_tool.first(), .arguments = m_tool.mid(1) + QStringList{from, to}};
    command.stop = std::move(stop);
    command.keptOpen = keptOpen;
    const ShellResult result = co_await m_shell.run(std::move(command));
    if (const auto verdict = result.verdict(); !verdict)
        co_return std::unexpected(verdict.error().description().section(QLatin1Char('\n'), 0, 0));
    co_return std::expected<void, QString>();
}

} // namespace larkspur
