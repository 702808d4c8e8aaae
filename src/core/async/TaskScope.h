#pragma once

#include "core/async/Task.h"

#include <QObject>

#include <functional>

namespace larkspur {

class Logger;

/// Runs tasks that nobody awaits, and knows when the last of them has ended. An exception that leaves a task
/// is logged instead of being lost. Destroy the owner of a scope only after `drained`.
class TaskScope : public QObject {
    Q_OBJECT
  public:
    explicit TaskScope(Logger &logger, QObject *parent = nullptr);

    /// Takes over a running task; `name` stands in the log if it fails.
    void spawn(QString name, Task<> task);

    int running() const { return m_running; }
    bool isDrained() const { return m_running == 0; }

  Q_SIGNALS:
    void drained();

  private:
    Task<> watch(QString name, Task<> task);

    Logger &m_logger;
    int m_running = 0;
};

} // namespace larkspur
