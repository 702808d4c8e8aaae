#pragma once

#include "core/process/ShellCommand.h"

#include <QProcessEnvironment>
#include <QString>

namespace larkspur {

/// What the environment of a child is built from.
struct ChildEnvironmentInputs {
    QProcessEnvironment system;     ///< the program's own environment
    EnvironmentMap loginShell = {}; ///< HOMEBREW_ variables of the person's login shell
    QString askpassScript;          ///< absolute path
    QString customCaskAppdir;       ///< folder for applications, as the person typed it; may be empty
    QString homeFolder;
};

/// The environment for one command: search path, askpass program, Homebrew's switches, the person's own
/// Homebrew configuration, and last the command's own entries. A password is not in it: see `ChildStart`.
QProcessEnvironment childEnvironment(const ChildEnvironmentInputs &inputs, const ShellCommand &command);

/// The HOMEBREW_ variables in the output of `env` that a login shell ran, without those that would choose
/// another Homebrew or colour the output.
EnvironmentMap homebrewVariables(const QString &envOutput);

} // namespace larkspur
