#pragma once

#include <QByteArray>
#include <QList>

#include <sys/types.h>

namespace larkspur::test {

/// The running processes with the text in their command line, without the asking one. Needs no tool that a
/// bare system lacks.
QList<pid_t> processesWith(const QByteArray &text);

/// Kills every one of them.
void killProcessesWith(const QByteArray &text);

} // namespace larkspur::test
