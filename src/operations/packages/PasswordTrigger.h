#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace larkspur {

/// What in the output of a run shows that it wants the administrator password.
struct PasswordTrigger {
    QString line;
    /// The package at which Homebrew was, as its last heading before the line names it; empty where none
    /// does.
    QString package;
};
std::optional<PasswordTrigger> passwordTrigger(const QStringList &output);

} // namespace larkspur
