#include "userdata/Snooze.h"

#include "userdata/RecordDates.h"

#include <array>
#include <utility>

namespace larkspur {

using namespace std::chrono_literals;

namespace {

constexpr std::array durationNames{std::pair{SnoozeDuration::OneDay, QLatin1String("1_day")},
                                   std::pair{SnoozeDuration::OneWeek, QLatin1String("1_week")},
                                   std::pair{SnoozeDuration::OneMonth, QLatin1String("1_month")}};
constexpr QLatin1String durationCase("duration");
constexpr QLatin1String untilNextVersionCase("untilNextVersion");
constexpr QLatin1String durationValue("_0");

QJsonObject typeToJson(const SnoozeType &type) {
    const auto *duration = std::get_if<SnoozeDuration>(&type);
    if (!duration)
        return {{untilNextVersionCase, QJsonObject()}};
    for (const auto &[value, name] : durationNames)
        if (value == *duration)
            return {{durationCase, QJsonObject{{durationValue, name}}}};
    return {};
}

std::optional<SnoozeType> typeFromJson(const QJsonValue &json) {
    const QJsonObject type = json.toObject();
    if (type.value(untilNextVersionCase).isObject())
        return UntilNextVersion();
    const QString text = type.value(durationCase).toObject().value(durationValue).toString();
    for (const auto &[value, name] : durationNames)
        if (text == name)
            return value;
    return std::nullopt;
}

/// The span in its largest whole unit, rounded: "6 days".
QString spanText(std::chrono::seconds span) {
    struct Unit {
        std::chrono::seconds length;
        QLatin1String name;
    };
    constexpr std::array units{Unit{24h * 7, QLatin1String("week")}, Unit{24h, QLatin1String("day")},
                               Unit{1h, QLatin1String("hour")}, Unit{1min, QLatin1String("minute")}};
    for (const auto &[length, name] : units) {
        const auto count = (span + length / 2) / length;
        if (span >= length)
            return count == 1 ? QStringLiteral("1 %1").arg(name)
                              : QStringLiteral("%1 %2s").arg(count).arg(name);
    }
    return QStringLiteral("less than a minute");
}

} // namespace

std::chrono::seconds lengthOf(SnoozeDuration duration) {
    switch (duration) {
    case SnoozeDuration::OneDay:
        return 24h;
    case SnoozeDuration::OneWeek:
        return 24h * 7;
    case SnoozeDuration::OneMonth:
        return 24h * 30;
    }
    return 0s;
}

bool SnoozedPackage::isInForce(const QString &offeredVersion, const QDateTime &now) const {
    if (const auto *duration = std::get_if<SnoozeDuration>(&snoozeType))
        return now < snoozedAt.addSecs(lengthOf(*duration).count());
    return offeredVersion == snoozedVersion;
}

QString SnoozedPackage::description(const QDateTime &now) const {
    const auto *duration = std::get_if<SnoozeDuration>(&snoozeType);
    if (!duration)
        return QStringLiteral("Until version after ") + snoozedVersion;
    const auto rest = now.secsTo(snoozedAt.addSecs(lengthOf(*duration).count()));
    return QStringLiteral("Expires in ") + spanText(std::chrono::seconds(std::max<qint64>(rest, 0)));
}

QJsonObject SnoozedPackage::toJson() const {
    return {{QStringLiteral("id"), id.toString(QUuid::WithoutBraces).toUpper()},
            {QStringLiteral("packageName"), packageName},
            {QStringLiteral("snoozedVersion"), snoozedVersion},
            {QStringLiteral("snoozeType"), typeToJson(snoozeType)},
            {QStringLiteral("snoozedAt"), recordDate(snoozedAt)},
            {QStringLiteral("isCask"), isCask}};
}

std::optional<SnoozedPackage> SnoozedPackage::fromJson(const QJsonObject &json) {
    const QUuid id(json.value(QLatin1String("id")).toString());
    const QJsonValue name = json.value(QLatin1String("packageName"));
    const QJsonValue version = json.value(QLatin1String("snoozedVersion"));
    const QJsonValue isCask = json.value(QLatin1String("isCask"));
    const auto type = typeFromJson(json.value(QLatin1String("snoozeType")));
    const auto date = dateFromRecord(json.value(QLatin1String("snoozedAt")));
    if (id.isNull() || !name.isString() || !version.isString() || !isCask.isBool() || !type || !date)
        return std::nullopt;
    return SnoozedPackage{id, name.toString(), version.toString(), *type, *date, isCask.toBool()};
}

} // namespace larkspur
