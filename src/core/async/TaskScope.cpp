#include "core/async/TaskScope.h"

#include "core/log/Logger.h"

#include <exception>

namespace larkspur {

TaskScope::TaskScope(Logger &logger, QObject *parent)
    : QObject(parent)
    , m_logger(logger) {}

void TaskScope::spawn(QString name, Task<> task) {
    ++m_running;
    [[maybe_unused]] const auto watching = watch(std::move(name), std::move(task));
}

Task<> TaskScope::watch(QString name, Task<> task) {
    try {
        co_await task;
    } catch (const std::exception &failure) {
        m_logger.error(QStringLiteral("%1 ended with an unexpected failure: %2")
                           .arg(name, QString::fromLocal8Bit(failure.what())));
    }
    if (--m_running == 0)
        Q_EMIT drained();
}

} // namespace larkspur
