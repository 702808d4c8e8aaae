#pragma once

#include "inventory/records/BrewServiceInfo.h"
#include "inventory/records/Cask.h"
#include "inventory/records/Formula.h"
#include "inventory/records/OutdatedPackage.h"
#include "inventory/records/TapInfo.h"

#include <QJsonArray>
#include <QJsonObject>

#include <optional>

namespace larkspur {

/// The program's own JSON of its records: every field under its own name, absent values as null.
QJsonObject toJson(const Formula &formula);
QJsonObject toJson(const Cask &cask);
QJsonObject toJson(const OutdatedPackage &package);
QJsonObject toJson(const BrewServiceInfo &service);
QJsonObject toJson(const TapInfo &tap);

/// Reads a record back. Nothing if a field lacks or has another type: the file is of another version.
template <typename Record>
std::optional<Record> recordFromJson(const QJsonObject &json);
template <>
std::optional<Formula> recordFromJson(const QJsonObject &json);
template <>
std::optional<Cask> recordFromJson(const QJsonObject &json);
template <>
std::optional<OutdatedPackage> recordFromJson(const QJsonObject &json);

template <typename Record>
QJsonArray toJson(const QList<Record> &records) {
    QJsonArray array;
    for (const Record &record : records)
        array.append(toJson(record));
    return array;
}

/// Dates as "yyyy-MM-dd HH:mm:ss Z", Z being the offset from UTC such as +0000.
QString dateText(const QDateTime &date);
std::optional<QDateTime> dateFromText(const QString &text);

} // namespace larkspur
