#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace larkspur {

/// An installed cask, or one that could be installed.
struct Cask {
    QString token;
    QStringList name; ///< display names
    QString version;  ///< the installed one, or the one that would be installed
    std::optional<QString> description;
    std::optional<QString> homepage;
    std::optional<QString> url;
    std::optional<QString> caveats;
    QStringList appNames; ///< application bundles, as they are called once installed
    bool requiresRosetta = false;
    bool mayNeedAdministrator = false;    ///< Homebrew carries out some of its steps with sudo
    std::optional<QString> actualVersion; ///< what the installed bundle says of itself
    std::optional<QString> actualBuild;
    std::optional<QDateTime> installedOn;

    bool operator==(const Cask &) const = default;
};

} // namespace larkspur
