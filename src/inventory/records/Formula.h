#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace larkspur {

/// An installed formula, or one that could be installed.
struct Formula {
    QString name;     ///< short name: what its folder in the Cellar is called
    QString fullName; ///< tap-qualified outside the core tap; for commands
    QString version;  ///< the newest installed one, or the one that would be installed
    std::optional<QString> description;
    std::optional<QString> homepage;
    std::optional<QString> sourceURL;
    bool installedAsDependency = false;
    QStringList dependencies; ///< full names
    std::optional<QDateTime> installedOn;
    std::optional<QString> caveats;
    std::optional<QString> license;

    bool operator==(const Formula &) const = default;
};

} // namespace larkspur
