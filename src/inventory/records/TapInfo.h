#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace larkspur {

/// One source of packages.
struct TapInfo {
    QString name; ///< user/repo
    QString user;
    QString repo;
    QString path;
    QStringList formulaNames; ///< full names
    QStringList caskTokens;
    QStringList commandNames;
    int formulaCount = 0;
    int caskCount = 0;
    int commandCount = 0;
    std::optional<QString> remote;
    bool isOfficial = false;
    bool isInstalled = false;
    std::optional<bool> isTrusted; ///< absent where Homebrew does not say

    bool operator==(const TapInfo &) const = default;
};

/// An installed tap that Homebrew does not trust: it does not load the packages installed from it.
struct HiddenTap {
    QString name;
    QStringList packages; ///< full names of the installed packages that are hidden

    bool operator==(const HiddenTap &) const = default;
};

} // namespace larkspur
