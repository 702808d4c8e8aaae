#include "inventory/decoding/Conversion.h"

#include "core/brew/PackageName.h"

namespace larkspur {

namespace {

/// Compares versions part by part: numbers as numbers, the revision behind "_" last.
bool isOlder(const QString &left, const QString &right) {
    const auto parts = [](const QString &version) {
        QList<qint64> numbers;
        QString digits;
        for (const QChar c : version + QLatin1Char('.')) {
            if (c.isDigit()) {
                digits.append(c);
            } else if (!digits.isEmpty()) {
                numbers.append(digits.toLongLong());
                digits.clear();
            }
        }
        return numbers;
    };
    return parts(left) < parts(right);
}

/// Homebrew lists the oldest version first, but sorts only since some version: the newest is looked for.
const InstalledInfo *newest(const QList<InstalledInfo> &installed) {
    const InstalledInfo *best = nullptr;
    for (const InstalledInfo &info : installed)
        if (!best || !isOlder(info.version, best->version))
            best = &info;
    return best;
}

} // namespace

Formula toFormula(const FormulaJSON &json) {
    Formula formula;
    formula.name = shortName(json.name);
    formula.fullName = json.fullName;
    formula.description = json.desc;
    formula.homepage = json.homepage;
    formula.license = json.license;
    formula.caveats = json.caveats;
    formula.dependencies = json.dependencies;
    if (json.urls) {
        const auto &url = json.urls->stable ? json.urls->stable : json.urls->head;
        formula.sourceURL = url ? std::optional(url->url) : std::nullopt;
    }
    if (const InstalledInfo *info = newest(json.installed)) {
        formula.version = info->version;
        formula.installedAsDependency = info->installedAsDependency;
        if (info->time)
            formula.installedOn = QDateTime::fromSecsSinceEpoch(*info->time, Qt::UTC);
    } else if (json.versions) {
        formula.version = json.versions->stable.value_or(json.versions->head.value_or(QString()));
    }
    return formula;
}

Cask toCask(const CaskJSON &json) {
    Cask cask;
    cask.token = shortName(json.token);
    cask.name = json.name;
    cask.version = json.installed.value_or(json.version);
    cask.description = json.desc;
    cask.homepage = json.homepage;
    cask.url = json.url;
    cask.caveats = json.caveats;
    cask.appNames = json.appNames;
    cask.mayNeedAdministrator = json.mayNeedAdministrator;
    cask.requiresRosetta = json.requiresRosetta;
    cask.actualVersion = json.bundleShortVersion;
    cask.actualBuild = json.bundleVersion;
    return cask;
}

OutdatedPackage toOutdatedPackage(const OutdatedFormula &formula) {
    return {.name = shortName(formula.name),
            .fullName = formula.name,
            .isCask = false,
            .installedVersions = formula.installedVersions,
            .currentVersion = formula.currentVersion,
            .pinned = formula.pinned};
}

OutdatedPackage toOutdatedPackage(const OutdatedCask &cask) {
    return {.name = shortName(cask.name),
            .fullName = cask.name,
            .isCask = true,
            .installedVersions = cask.installedVersions,
            .currentVersion = cask.currentVersion,
            .pinned = cask.pinned};
}

} // namespace larkspur
