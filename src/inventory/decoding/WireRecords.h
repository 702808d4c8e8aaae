#pragma once

#include "inventory/decoding/JsonReader.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace larkspur {

// What Homebrew's JSON (version 2) holds, as far as the program uses it. Conversion.h makes the program's own
// records of them.

struct FormulaVersions {
    std::optional<QString> stable;
    std::optional<QString> head;
};

struct FormulaURLInfo {
    QString url;
};

struct FormulaURLs {
    std::optional<FormulaURLInfo> stable;
    std::optional<FormulaURLInfo> head;
};

struct FormulaBottleFile {
    std::optional<QString> url;
    std::optional<QString> sha256;
};

struct FormulaBottleStable {
    QHash<QString, FormulaBottleFile> files; ///< by platform tag
};

struct FormulaBottle {
    std::optional<FormulaBottleStable> stable;
};

/// One installed version of a formula.
struct InstalledInfo {
    QString version;
    bool installedAsDependency = false; ///< follows from `installedOnRequest` where Homebrew no longer says
    bool installedOnRequest = false;
    std::optional<qint64> time; ///< seconds since 1970
};

struct FormulaJSON {
    QString name;
    QString fullName;
    std::optional<QString> desc;
    std::optional<QString> homepage;
    std::optional<QString> license;
    std::optional<FormulaVersions> versions;
    std::optional<FormulaURLs> urls;
    QStringList dependencies;
    QList<InstalledInfo> installed; ///< oldest first
    std::optional<QString> caveats;
    std::optional<FormulaBottle> bottle;
};

struct CaskJSON {
    QString token;
    std::optional<QString> fullToken;
    QStringList name; ///< display names
    QString version;  ///< empty where the cask has none for this system
    std::optional<QString> desc;
    std::optional<QString> homepage;
    std::optional<QString> url;
    std::optional<QString> installed; ///< the installed version
    std::optional<QString> caveats;
    std::optional<QString> tap;
    std::optional<QString> rubySourcePath;
    QStringList appNames;
    bool mayNeedAdministrator = false;
    QStringList bundleIDHints;
    bool requiresRosetta = false;
    bool disabled = false;
    std::optional<QString> bundleShortVersion; ///< of the bundle that is really installed
    std::optional<QString> bundleVersion;
};

struct BrewInfoResponse {
    LossyArray<FormulaJSON> formulae;
    LossyArray<CaskJSON> casks;
};

struct OutdatedFormula {
    QString name; ///< tap-qualified outside the core tap
    QStringList installedVersions;
    QString currentVersion;
    bool pinned = false;
};

struct OutdatedCask {
    QString name;
    QStringList installedVersions;
    QString currentVersion;
    bool pinned = false;
};

struct OutdatedResponse {
    LossyArray<OutdatedFormula> formulae;
    LossyArray<OutdatedCask> casks;
};

} // namespace larkspur
