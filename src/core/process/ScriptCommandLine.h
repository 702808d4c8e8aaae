#pragma once

#include <QString>
#include <QStringList>

namespace larkspur {

/// The command line that runs a program inside a terminal made by `script`, for systems whose `script` takes
/// the command as further arguments. The shell that it starts hands every argument on as it is: what is more
/// than a plain word is quoted. `before` is the caller's own shell text, put in front of the program.
QString scriptCommandLine(const QString &program, const QStringList &arguments, const QString &before = {});

} // namespace larkspur
