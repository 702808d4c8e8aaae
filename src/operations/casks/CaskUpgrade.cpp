#include "operations/casks/CaskUpgrade.h"

#include "core/files/FolderNames.h"
#include "operations/casks/ApplicationBundle.h"
#include "operations/casks/CaskApplications.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QMap>

#include <algorithm>
#include <sys/stat.h>

namespace larkspur {

namespace {

bool isPlainName(const QString &name) {
    return !name.isEmpty() && !name.startsWith(QLatin1Char('.')) && !name.contains(QLatin1Char('/')) &&
           !name.contains(QChar(0));
}

} // namespace

std::expected<QList<CaskUpgrade>, QString> CaskUpgrade::of(const PackageName &token,
                                                           const CaskSetting &setting) {
    const auto linked = caskApplications(token, setting);
    if (!linked)
        return std::unexpected(linked.error());
    const QString home = setting.prefix + QStringLiteral("/Caskroom/") + token.shortName();
    const auto versions = namesIn(home);
    if (!versions)
        return std::unexpected(versions.error());
    QMap<QString, CaskUpgrade> upgrades; // by version; almost always one
    for (const CaskApplication &application : *linked) {
        const QFileInfo link(application.link);
        const QString version = link.dir().dirName();
        if (!isBundle(application.place) || version.endsWith(backupSuffix))
            continue;
        auto upgrade = upgrades.find(version);
        if (upgrade == upgrades.end())
            upgrade = upgrades.insert(version, {.token = token,
                                                .version = version,
                                                .versions = *versions,
                                                .applications = {},
                                                .options = optionsRecord(home)});
        upgrade->applications.append({.name = link.fileName(), .place = application.place});
    }
    return upgrades.values();
}

QString CaskUpgrade::optionsRecord(const QString &home) {
    struct stat file = {};
    const QString path = home + QStringLiteral("/.metadata/config.json");
    if (::stat(QFile::encodeName(path).constData(), &file) != 0)
        return {};
    // Written aside and renamed, so that each is another file.
    return QStringLiteral("%1-%2").arg(file.st_ino).arg(QFileInfo(path).lastModified().toMSecsSinceEpoch());
}

QJsonObject CaskUpgrade::toJson() const {
    QJsonArray list;
    for (const Application &application : applications)
        list.append(QJsonObject{{QStringLiteral("name"), application.name},
                                {QStringLiteral("place"), application.place}});
    return {{QStringLiteral("token"), token.text()},
            {QStringLiteral("version"), version},
            {QStringLiteral("versions"), QJsonArray::fromStringList(versions)},
            {QStringLiteral("applications"), list},
            {QStringLiteral("options"), options}};
}

std::optional<CaskUpgrade> CaskUpgrade::fromJson(const QJsonObject &object) {
    const auto token = PackageName::parse(object.value(QLatin1String("token")).toString());
    const QJsonValue versions = object.value(QLatin1String("versions"));
    const QJsonValue applications = object.value(QLatin1String("applications"));
    if (!token || !object.value(QLatin1String("options")).isString() || !versions.isArray() ||
        !applications.isArray())
        return std::nullopt;
    CaskUpgrade upgrade{.token = *token,
                        .version = object.value(QLatin1String("version")).toString(),
                        .versions = {},
                        .applications = {},
                        .options = object.value(QLatin1String("options")).toString()};
    for (const QJsonValue &version : versions.toArray())
        upgrade.versions.append(version.toString());
    for (const QJsonValue &value : applications.toArray())
        upgrade.applications.append({.name = value.toObject().value(QLatin1String("name")).toString(),
                                     .place = value.toObject().value(QLatin1String("place")).toString()});
    const bool isPlain = isPlainName(upgrade.version) && !upgrade.version.endsWith(backupSuffix) &&
                         std::ranges::all_of(upgrade.versions, &isPlainName) &&
                         std::ranges::all_of(upgrade.applications, &isPlainName, &Application::name);
    if (!isPlain || !upgrade.versions.contains(upgrade.version))
        return std::nullopt;
    return upgrade;
}

} // namespace larkspur
