#pragma once

#include <QDateTime>
#include <QJsonValue>

#include <optional>

namespace larkspur {

/// A moment as every record of the person's data holds it: ISO 8601 with milliseconds, in UTC.
inline QString recordDate(const QDateTime &date) {
    return date.toUTC().toString(Qt::ISODateWithMs);
}

inline std::optional<QDateTime> dateFromRecord(const QJsonValue &value) {
    const QDateTime date = QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
    return date.isValid() ? std::optional(date.toUTC()) : std::nullopt;
}

} // namespace larkspur
