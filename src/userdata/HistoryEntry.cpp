#include "userdata/HistoryEntry.h"

#include "userdata/RecordDates.h"

#include <array>

namespace larkspur {

namespace {

constexpr std::array actions{HistoryAction::Install, HistoryAction::Uninstall, HistoryAction::Upgrade,
                             HistoryAction::Update};

std::optional<HistoryAction> actionFrom(const QString &name) {
    for (const HistoryAction action : actions)
        if (historyActionName(action) == name)
            return action;
    return std::nullopt;
}

} // namespace

QString historyActionName(HistoryAction action) {
    switch (action) {
    case HistoryAction::Install:
        return QStringLiteral("install");
    case HistoryAction::Uninstall:
        return QStringLiteral("uninstall");
    case HistoryAction::Upgrade:
        return QStringLiteral("upgrade");
    case HistoryAction::Update:
        return QStringLiteral("update");
    }
    return {};
}

QJsonObject HistoryEntry::toJson() const {
    return {{QStringLiteral("id"), id.toString(QUuid::WithoutBraces).toUpper()},
            {QStringLiteral("timestamp"), recordDate(timestamp)},
            {QStringLiteral("action"), historyActionName(action)},
            {QStringLiteral("packageName"), packageName},
            {QStringLiteral("isCask"), isCask},
            {QStringLiteral("success"), success}};
}

std::optional<HistoryEntry> HistoryEntry::fromJson(const QJsonObject &json) {
    const QUuid id(json.value(QLatin1String("id")).toString());
    const auto date = dateFromRecord(json.value(QLatin1String("timestamp")));
    const auto action = actionFrom(json.value(QLatin1String("action")).toString());
    const QJsonValue name = json.value(QLatin1String("packageName"));
    const QJsonValue isCask = json.value(QLatin1String("isCask"));
    const QJsonValue success = json.value(QLatin1String("success"));
    if (id.isNull() || !date || !action || !name.isString() || !isCask.isBool() || !success.isBool())
        return std::nullopt;
    return HistoryEntry{id, *date, *action, name.toString(), isCask.toBool(), success.toBool()};
}

} // namespace larkspur
