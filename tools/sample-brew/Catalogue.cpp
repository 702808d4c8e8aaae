#include "Catalogue.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace sample {

namespace {

QString text(const QJsonObject &json, const char *key, const QString &fallback = {}) {
    return json.value(QLatin1String(key)).toString(fallback);
}

QStringList texts(const QJsonObject &json, const char *key) {
    QStringList list;
    for (const QJsonValue &value : json.value(QLatin1String(key)).toArray())
        list.append(value.toString());
    return list;
}

bool flag(const QJsonObject &json, const char *key, bool fallback = false) {
    return json.value(QLatin1String(key)).toBool(fallback);
}

Formula formulaFrom(const QJsonObject &json) {
    Formula formula;
    formula.name = text(json, "name");
    formula.tap = text(json, "tap", QStringLiteral("homebrew/core"));
    formula.desc = text(json, "desc");
    formula.license = text(json, "license");
    formula.version = text(json, "version");
    formula.installed = text(json, "installed");
    formula.dependencies = texts(json, "dependencies");
    formula.caveats = text(json, "caveats");
    formula.service = text(json, "service");
    formula.behaviour = text(json, "behaviour");
    formula.kilobytes = json.value(QLatin1String("kilobytes")).toInt();
    formula.days = json.value(QLatin1String("days")).toInt();
    formula.dependency = flag(json, "dependency");
    formula.kegOnly = flag(json, "keg_only");
    formula.pinned = flag(json, "pinned");
    return formula;
}

Cask caskFrom(const QJsonObject &json) {
    Cask cask;
    cask.token = text(json, "token");
    cask.tap = text(json, "tap", QStringLiteral("homebrew/cask"));
    cask.names = texts(json, "names");
    cask.app = text(json, "app");
    cask.desc = text(json, "desc");
    cask.version = text(json, "version");
    cask.installed = text(json, "installed");
    cask.caveats = text(json, "caveats");
    cask.behaviour = text(json, "behaviour");
    cask.kilobytes = json.value(QLatin1String("kilobytes")).toInt();
    cask.days = json.value(QLatin1String("days")).toInt();
    cask.autoUpdates = flag(json, "auto_updates");
    cask.rosetta = flag(json, "rosetta");
    return cask;
}

QString lastPart(const QString &name) {
    return name.section(QLatin1Char('/'), -1);
}

} // namespace

QString Formula::fullName() const {
    return tap == QLatin1String("homebrew/core") ? name : tap + QLatin1Char('/') + name;
}

Catalogue Catalogue::load() {
    QFile file(QStringLiteral(":/catalogue.json"));
    Catalogue catalogue;
    if (!file.open(QIODevice::ReadOnly))
        return catalogue;
    const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
    for (const QJsonValue &value : json.value(QLatin1String("taps")).toArray()) {
        const QJsonObject tap = value.toObject();
        catalogue.taps.append(
            {text(tap, "name"), flag(tap, "official"), flag(tap, "trusted", true), text(tap, "remote")});
    }
    for (const QJsonValue &value : json.value(QLatin1String("formulae")).toArray())
        catalogue.formulae.append(formulaFrom(value.toObject()));
    for (const QJsonValue &value : json.value(QLatin1String("casks")).toArray())
        catalogue.casks.append(caskFrom(value.toObject()));
    return catalogue;
}

const Formula *Catalogue::formula(const QString &name) const {
    const auto found = std::ranges::find(formulae, lastPart(name), &Formula::name);
    return found == formulae.end() || (name.contains(QLatin1Char('/')) && found->fullName() != name)
               ? nullptr
               : &*found;
}

const Cask *Catalogue::cask(const QString &token) const {
    const auto found = std::ranges::find(casks, lastPart(token), &Cask::token);
    return found == casks.end() ? nullptr : &*found;
}

const Tap *Catalogue::tap(const QString &name) const {
    const auto found = std::ranges::find(taps, name, &Tap::name);
    return found == taps.end() ? nullptr : &*found;
}

} // namespace sample
