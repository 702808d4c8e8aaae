#include "operations/kegs/KegEntry.h"

#include "core/brew/PackageName.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

namespace {

QJsonObject toJson(const KegEntry &entry) {
    QJsonObject json{{QStringLiteral("formula"), entry.formula},
                     {QStringLiteral("version"), entry.version},
                     {QStringLiteral("bytes"), entry.bytes},
                     {QStringLiteral("date"), entry.date.toUTC().toString(Qt::ISODateWithMs)}};
    if (entry.snapshotID)
        json.insert(QStringLiteral("snapshotID"), entry.snapshotID->toString(QUuid::WithoutBraces).toUpper());
    if (!entry.fullName.isEmpty())
        json.insert(QStringLiteral("fullName"), entry.fullName);
    return json;
}

std::optional<KegEntry> entryFrom(const QJsonObject &json) {
    KegEntry entry;
    entry.formula = json.value(QLatin1String("formula")).toString();
    entry.version = json.value(QLatin1String("version")).toString();
    entry.bytes = json.value(QLatin1String("bytes")).toInteger();
    entry.date = QDateTime::fromString(json.value(QLatin1String("date")).toString(), Qt::ISODateWithMs);
    const QUuid id = QUuid::fromString(json.value(QLatin1String("snapshotID")).toString());
    if (!id.isNull())
        entry.snapshotID = id;
    entry.fullName = json.value(QLatin1String("fullName")).toString();
    const auto name = PackageName::parse(entry.formula);
    const bool isNamed =
        name && !name->isQualified() && (entry.fullName.isEmpty() || PackageName::parse(entry.fullName));
    if (!isNamed || !isPlainVersion(entry.version) || !entry.date.isValid() || entry.bytes < 0)
        return std::nullopt;
    return entry;
}

} // namespace

QByteArray kegIndexText(const QList<KegEntry> &entries) {
    QJsonArray list;
    for (const KegEntry &entry : entries)
        list.append(toJson(entry));
    return QJsonDocument(list).toJson();
}

KegIndex kegIndexFromText(const QByteArray &text) {
    const QJsonDocument document = QJsonDocument::fromJson(text);
    KegIndex index{.entries = {}, .isWhole = document.isArray()};
    for (const QJsonValue &value : document.array()) {
        const auto entry = entryFrom(value.toObject());
        index.isWhole = index.isWhole && entry;
        if (entry)
            index.entries.append(*entry);
    }
    return index;
}

} // namespace larkspur
