#pragma once

#include "core/async/Task.h"

#include <QObject>

namespace larkspur {
class SudoAuth;
class TaskScope;
} // namespace larkspur

namespace larkspur::cli {

class Terminal;

/// Asks for the administrator password at the controlling terminal, without echo. Without a terminal every
/// request is cancelled, with a word about what to do.
class PasswordPrompt : public QObject {
    Q_OBJECT
  public:
    PasswordPrompt(SudoAuth &auth, const Terminal &terminal, TaskScope &tasks, StopToken stop);

  private:
    void onChanged();
    QString explanation() const;
    Task<> ask();

    SudoAuth &m_auth;
    const Terminal &m_terminal;
    TaskScope &m_tasks;
    StopToken m_stop;
    bool m_isAsking = false;
};

} // namespace larkspur::cli
