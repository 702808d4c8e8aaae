#include "operations/snapshots/Snapshot.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

namespace larkspur {

namespace {

constexpr std::array triggers{SnapshotTrigger::Manual, SnapshotTrigger::PreUpgrade,
                              SnapshotTrigger::Scheduled};

QJsonArray toJson(const QList<SnapshotEntry> &entries) {
    QJsonArray list;
    for (const SnapshotEntry &entry : entries)
        list.append(QJsonObject{{QStringLiteral("name"), entry.name},
                                {QStringLiteral("version"), entry.version},
                                {QStringLiteral("isCask"), entry.isCask}});
    return list;
}

/// Nothing if an element has no name: a list with a hole would restore the wrong packages.
std::optional<QList<SnapshotEntry>> entriesFrom(const QJsonValue &value, bool isCask) {
    if (!value.isArray())
        return std::nullopt;
    QList<SnapshotEntry> entries;
    for (const QJsonValue &element : value.toArray()) {
        const QJsonValue name = element.toObject().value(QLatin1String("name"));
        const QJsonValue version = element.toObject().value(QLatin1String("version"));
        if (!name.isString() || !version.isString())
            return std::nullopt;
        entries.append({name.toString(), version.toString(), isCask});
    }
    return entries;
}

using Names = QHash<QString, const SnapshotEntry *>;

Names namesOf(const QList<SnapshotEntry> &entries) {
    Names names;
    names.reserve(entries.size());
    for (const SnapshotEntry &entry : entries)
        names.insert(entry.name, &entry);
    return names;
}

void compareKind(const QList<SnapshotEntry> &older, const QList<SnapshotEntry> &newer, SnapshotDiff &diff) {
    const Names before = namesOf(older);
    const Names now = namesOf(newer);
    for (const SnapshotEntry &entry : older) {
        const SnapshotEntry *current = now.value(entry.name);
        if (!current)
            diff.removed.append(entry);
        else if (current->version != entry.version)
            diff.changed.append({entry, current->version});
    }
    for (const SnapshotEntry &entry : newer)
        if (!before.contains(entry.name))
            diff.added.append(entry);
}

} // namespace

QString snapshotTriggerName(SnapshotTrigger trigger) {
    switch (trigger) {
    case SnapshotTrigger::Manual:
        return QStringLiteral("manual");
    case SnapshotTrigger::PreUpgrade:
        return QStringLiteral("preUpgrade");
    case SnapshotTrigger::Scheduled:
        return QStringLiteral("scheduled");
    }
    return {};
}

QByteArray snapshotText(const Snapshot &snapshot) {
    QJsonObject json{{QStringLiteral("id"), snapshot.id.toString(QUuid::WithoutBraces).toUpper()},
                     {QStringLiteral("date"), snapshot.date.toUTC().toString(Qt::ISODateWithMs)},
                     {QStringLiteral("trigger"), snapshotTriggerName(snapshot.trigger)},
                     {QStringLiteral("formulae"), toJson(snapshot.formulae)},
                     {QStringLiteral("casks"), toJson(snapshot.casks)},
                     {QStringLiteral("taps"), QJsonArray::fromStringList(snapshot.taps)}};
    if (snapshot.note)
        json.insert(QStringLiteral("note"), *snapshot.note);
    return QJsonDocument(json).toJson();
}

std::optional<Snapshot> snapshotFromText(const QByteArray &text) {
    const QJsonObject json = QJsonDocument::fromJson(text).object();
    Snapshot snapshot;
    snapshot.id = QUuid::fromString(json.value(QLatin1String("id")).toString());
    snapshot.date = QDateTime::fromString(json.value(QLatin1String("date")).toString(), Qt::ISODateWithMs);
    const auto trigger =
        std::ranges::find(triggers, json.value(QLatin1String("trigger")).toString(), snapshotTriggerName);
    auto formulae = entriesFrom(json.value(QLatin1String("formulae")), false);
    auto casks = entriesFrom(json.value(QLatin1String("casks")), true);
    if (snapshot.id.isNull() || !snapshot.date.isValid() || trigger == triggers.end() || !formulae || !casks)
        return std::nullopt;
    snapshot.trigger = *trigger;
    snapshot.formulae = std::move(*formulae);
    snapshot.casks = std::move(*casks);
    for (const QJsonValue &tap : json.value(QLatin1String("taps")).toArray())
        if (tap.isString())
            snapshot.taps.append(tap.toString());
    if (const QJsonValue note = json.value(QLatin1String("note")); note.isString())
        snapshot.note = note.toString();
    return snapshot;
}

SnapshotDiff compareSnapshots(const Snapshot &older, const Snapshot &newer) {
    SnapshotDiff diff;
    compareKind(older.formulae, newer.formulae, diff);
    compareKind(older.casks, newer.casks, diff);
    return diff;
}

} // namespace larkspur
