#include "operations/kegs/KegEntry.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

namespace {

/// A name that may become a folder's.
bool isPlain(const QString &name) {
    return !name.isEmpty() && !name.contains(QLatin1Char('/')) && !name.startsWith(QLatin1Char('.'));
}

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

} // namespace

QByteArray kegIndexText(const QList<KegEntry> &entries) {
    QJsonArray list;
    for (const KegEntry &entry : entries)
        list.append(toJson(entry));
    return QJsonDocument(list).toJson();
}

QList<KegEntry> kegIndexFromText(const QByteArray &text) {
    QList<KegEntry> entries;
    for (const QJsonValue &value : QJsonDocument::fromJson(text).array()) {
        const QJsonObject json = value.toObject();
        KegEntry entry;
        entry.formula = json.value(QLatin1String("formula")).toString();
        entry.version = json.value(QLatin1String("version")).toString();
        entry.bytes = json.value(QLatin1String("bytes")).toInteger();
        entry.date = QDateTime::fromString(json.value(QLatin1String("date")).toString(), Qt::ISODateWithMs);
        const QUuid id = QUuid::fromString(json.value(QLatin1String("snapshotID")).toString());
        if (!id.isNull())
            entry.snapshotID = id;
        entry.fullName = json.value(QLatin1String("fullName")).toString();
        if (isPlain(entry.formula) && isPlain(entry.version) && entry.date.isValid())
            entries.append(entry);
    }
    return entries;
}

} // namespace larkspur
