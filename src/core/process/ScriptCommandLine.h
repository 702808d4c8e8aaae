#pragma once

#include <QString>
#include <QStringList>

namespace larkspur {

/// The command line that runs a program inside a terminal made by `script`, for systems whose `script` takes
/// the command as further arguments. `before` is put in front of the program, inside the terminal.
QString scriptCommandLine(const QString &program, const QStringList &arguments, const QString &before = {});

} // namespace larkspur
