#include "inventory/records/RecordJson.h"

#include <QRegularExpression>

namespace larkspur {

namespace {

QJsonValue orNull(const std::optional<QString> &value) {
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

QJsonValue orNull(const std::optional<QDateTime> &value) {
    return value ? QJsonValue(dateText(*value)) : QJsonValue(QJsonValue::Null);
}

/// Takes fields out of an object and remembers whether one was missing or of another type.
class FieldReader {
  public:
    explicit FieldReader(const QJsonObject &json)
        : m_json(json) {}

    void read(const char *key, QString &into) {
        const QJsonValue value = take(key);
        m_isWhole = m_isWhole && value.isString();
        into = value.toString();
    }
    void read(const char *key, bool &into) {
        const QJsonValue value = take(key);
        m_isWhole = m_isWhole && value.isBool();
        into = value.toBool();
    }
    void read(const char *key, QStringList &into) {
        const QJsonValue value = take(key);
        m_isWhole = m_isWhole && value.isArray();
        for (const QJsonValue &element : value.toArray()) {
            m_isWhole = m_isWhole && element.isString();
            into.append(element.toString());
        }
    }
    void read(const char *key, std::optional<QString> &into) {
        const QJsonValue value = take(key);
        m_isWhole = m_isWhole && (value.isString() || value.isNull());
        into = value.isString() ? std::optional(value.toString()) : std::nullopt;
    }
    void read(const char *key, std::optional<QDateTime> &into) {
        std::optional<QString> text;
        read(key, text);
        into = text ? dateFromText(*text) : std::nullopt;
        m_isWhole = m_isWhole && text.has_value() == into.has_value();
    }

    template <typename Record>
    std::optional<Record> finish(Record record) const {
        return m_isWhole ? std::optional(std::move(record)) : std::nullopt;
    }

  private:
    QJsonValue take(const char *key) {
        const auto found = m_json.constFind(QLatin1String(key));
        m_isWhole = m_isWhole && found != m_json.constEnd();
        return found == m_json.constEnd() ? QJsonValue(QJsonValue::Undefined) : found.value();
    }

    const QJsonObject &m_json;
    bool m_isWhole = true;
};

} // namespace

QString dateText(const QDateTime &date) {
    return date.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(" +0000");
}

std::optional<QDateTime> dateFromText(const QString &text) {
    static const QRegularExpression pattern(
        QStringLiteral("\\A(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d) ([+-])(\\d\\d):?(\\d\\d)\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    QDateTime date = QDateTime::fromString(match.captured(1), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    if (!date.isValid())
        return std::nullopt;
    date.setTimeSpec(Qt::UTC);
    const int minutes = match.captured(3).toInt() * 60 + match.captured(4).toInt();
    return date.addSecs((match.captured(2) == QLatin1String("-") ? 60 : -60) * minutes);
}

QJsonObject toJson(const Formula &formula) {
    return {{QStringLiteral("name"), formula.name},
            {QStringLiteral("fullName"), formula.fullName},
            {QStringLiteral("version"), formula.version},
            {QStringLiteral("description"), orNull(formula.description)},
            {QStringLiteral("homepage"), orNull(formula.homepage)},
            {QStringLiteral("sourceURL"), orNull(formula.sourceURL)},
            {QStringLiteral("installedAsDependency"), formula.installedAsDependency},
            {QStringLiteral("dependencies"), QJsonArray::fromStringList(formula.dependencies)},
            {QStringLiteral("installedOn"), orNull(formula.installedOn)},
            {QStringLiteral("caveats"), orNull(formula.caveats)},
            {QStringLiteral("license"), orNull(formula.license)}};
}

template <>
std::optional<Formula> recordFromJson(const QJsonObject &json) {
    Formula formula;
    FieldReader reader(json);
    reader.read("name", formula.name);
    reader.read("fullName", formula.fullName);
    reader.read("version", formula.version);
    reader.read("description", formula.description);
    reader.read("homepage", formula.homepage);
    reader.read("sourceURL", formula.sourceURL);
    reader.read("installedAsDependency", formula.installedAsDependency);
    reader.read("dependencies", formula.dependencies);
    reader.read("installedOn", formula.installedOn);
    reader.read("caveats", formula.caveats);
    reader.read("license", formula.license);
    return reader.finish(std::move(formula));
}

QJsonObject toJson(const Cask &cask) {
    return {{QStringLiteral("token"), cask.token},
            {QStringLiteral("name"), QJsonArray::fromStringList(cask.name)},
            {QStringLiteral("version"), cask.version},
            {QStringLiteral("description"), orNull(cask.description)},
            {QStringLiteral("homepage"), orNull(cask.homepage)},
            {QStringLiteral("url"), orNull(cask.url)},
            {QStringLiteral("caveats"), orNull(cask.caveats)},
            {QStringLiteral("appNames"), QJsonArray::fromStringList(cask.appNames)},
            {QStringLiteral("mayNeedAdministrator"), cask.mayNeedAdministrator},
            {QStringLiteral("requiresRosetta"), cask.requiresRosetta},
            {QStringLiteral("actualVersion"), orNull(cask.actualVersion)},
            {QStringLiteral("actualBuild"), orNull(cask.actualBuild)},
            {QStringLiteral("installedOn"), orNull(cask.installedOn)}};
}

template <>
std::optional<Cask> recordFromJson(const QJsonObject &json) {
    Cask cask;
    FieldReader reader(json);
    reader.read("token", cask.token);
    reader.read("name", cask.name);
    reader.read("version", cask.version);
    reader.read("description", cask.description);
    reader.read("homepage", cask.homepage);
    reader.read("url", cask.url);
    reader.read("caveats", cask.caveats);
    reader.read("appNames", cask.appNames);
    reader.read("mayNeedAdministrator", cask.mayNeedAdministrator);
    reader.read("requiresRosetta", cask.requiresRosetta);
    reader.read("actualVersion", cask.actualVersion);
    reader.read("actualBuild", cask.actualBuild);
    reader.read("installedOn", cask.installedOn);
    return reader.finish(std::move(cask));
}

QJsonObject toJson(const OutdatedPackage &package) {
    return {{QStringLiteral("name"), package.name},
            {QStringLiteral("fullName"), package.fullName},
            {QStringLiteral("isCask"), package.isCask},
            {QStringLiteral("installedVersions"), QJsonArray::fromStringList(package.installedVersions)},
            {QStringLiteral("currentVersion"), package.currentVersion},
            {QStringLiteral("pinned"), package.pinned}};
}

template <>
std::optional<OutdatedPackage> recordFromJson(const QJsonObject &json) {
    OutdatedPackage package;
    FieldReader reader(json);
    reader.read("name", package.name);
    reader.read("fullName", package.fullName);
    reader.read("isCask", package.isCask);
    reader.read("installedVersions", package.installedVersions);
    reader.read("currentVersion", package.currentVersion);
    reader.read("pinned", package.pinned);
    return reader.finish(std::move(package));
}

QJsonObject toJson(const BrewServiceInfo &service) {
    return {{QStringLiteral("name"), service.name},
            {QStringLiteral("status"), serviceStatusName(service.status)},
            {QStringLiteral("user"), orNull(service.user)},
            {QStringLiteral("file"), orNull(service.file)},
            {QStringLiteral("exitCode"), service.exitCode ? QJsonValue(*service.exitCode) : QJsonValue()}};
}

QJsonObject toJson(const TapInfo &tap) {
    return {{QStringLiteral("name"), tap.name},
            {QStringLiteral("user"), tap.user},
            {QStringLiteral("repo"), tap.repo},
            {QStringLiteral("path"), tap.path},
            {QStringLiteral("formulaNames"), QJsonArray::fromStringList(tap.formulaNames)},
            {QStringLiteral("caskTokens"), QJsonArray::fromStringList(tap.caskTokens)},
            {QStringLiteral("commandNames"), QJsonArray::fromStringList(tap.commandNames)},
            {QStringLiteral("formulaCount"), tap.formulaCount},
            {QStringLiteral("caskCount"), tap.caskCount},
            {QStringLiteral("commandCount"), tap.commandCount},
            {QStringLiteral("remote"), orNull(tap.remote)},
            {QStringLiteral("isOfficial"), tap.isOfficial},
            {QStringLiteral("isInstalled"), tap.isInstalled},
            {QStringLiteral("isTrusted"), tap.isTrusted ? QJsonValue(*tap.isTrusted) : QJsonValue()}};
}

} // namespace larkspur
