#include "operations/snapshots/Snapshot.h"

#include "core/brew/PackageName.h"
#include "inventory/decoding/JsonReader.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
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

using Kind = RefusedEntry::Kind;

[[noreturn]] void failTooLong(const json::Path &path) {
    throw json::Failure{
        {DecodingError::Kind::TooLong, QStringLiteral("%1 entries").arg(mostSnapshotEntries), path.text()},
        false};
}

/// Why an entry may not reach brew; empty if it may.
QString refusalOf(const SnapshotEntry &entry) {
    const auto name = PackageName::parse(entry.name);
    if (!name || name->isQualified())
        return entry.isCask ? QStringLiteral("this is no name of a cask")
                            : QStringLiteral("this is no name of a formula");
    return isPlainVersion(entry.version) ? QString() : QStringLiteral("its version is none");
}

/// Fails if an element has no name or version: a list with a hole would restore the wrong packages.
QList<SnapshotEntry> decodeEntries(json::Value value, const json::Path &path, bool isCask,
                                   QList<RefusedEntry> &refused) {
    QList<SnapshotEntry> entries;
    qsizetype count = 0;
    json::forEachElement(value, path, [&](json::Value element, const json::Path &at) {
        SnapshotEntry entry{{}, {}, isCask};
        json::forEachField(element, at,
                           [&](std::string_view key, json::Value field, const json::Path &where) {
                               if (key == "name")
                                   entry.name = json::string(field, where);
                               else if (key == "version")
                                   entry.version = json::string(field, where);
                           });
        if (++count > mostSnapshotEntries)
            failTooLong(path);
        if (entry.name.isNull() || entry.version.isNull())
            json::failMissing(entry.name.isNull() ? "name" : "version", at);
        if (const QString refusal = refusalOf(entry); !refusal.isEmpty())
            refused.append({isCask ? Kind::Cask : Kind::Formula, entry.name, refusal});
        else
            entries.append(std::move(entry));
    });
    return entries;
}

QStringList decodeTaps(const QStringList &names, const json::Path &path, QList<RefusedEntry> &refused) {
    if (names.size() > mostSnapshotEntries)
        failTooLong(path);
    QStringList taps;
    for (const QString &name : names)
        if (TapName::parse(name))
            taps.append(name);
        else
            refused.append({Kind::Tap, name, QStringLiteral("this is no name of a tap")});
    return taps;
}

SnapshotTrigger decodeTrigger(const QString &name, const json::Path &path) {
    const auto found = std::ranges::find(triggers, name, snapshotTriggerName);
    if (found == triggers.end())
        json::failMissing("trigger", path);
    return *found;
}

/// Unknown keys are passed over.
Snapshot decodeSnapshot(json::Value root, const json::Path &path) {
    Snapshot snapshot;
    QStringList missing{QStringLiteral("id"), QStringLiteral("date"), QStringLiteral("trigger"),
                        QStringLiteral("formulae"), QStringLiteral("casks")};
    json::forEachField(root, path, [&](std::string_view key, json::Value field, const json::Path &at) {
        if (key == "id")
            snapshot.id = QUuid::fromString(json::string(field, at));
        else if (key == "date")
            snapshot.date = QDateTime::fromString(json::string(field, at), Qt::ISODateWithMs);
        else if (key == "trigger")
            snapshot.trigger = decodeTrigger(json::string(field, at), at);
        else if (key == "formulae")
            snapshot.formulae = decodeEntries(field, at, false, snapshot.refused);
        else if (key == "casks")
            snapshot.casks = decodeEntries(field, at, true, snapshot.refused);
        else if (key == "taps")
            snapshot.taps = decodeTaps(json::strings(field, at), at, snapshot.refused);
        else if (key == "note")
            snapshot.note = json::optionalString(field, at);
        missing.removeAll(QUtf8StringView(key.data(), static_cast<qsizetype>(key.size())).toString());
    });
    if (!missing.isEmpty() || snapshot.id.isNull() || !snapshot.date.isValid())
        json::failMissing("id, date, trigger, formulae or casks", path);
    return snapshot;
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

std::expected<Snapshot, QString> snapshotFromText(const QByteArray &text) {
    auto snapshot = json::document<Snapshot>(text, decodeSnapshot);
    if (!snapshot)
        return std::unexpected(snapshot.error().description());
    return std::move(*snapshot);
}

QStringList Snapshot::refusals() const {
    constexpr qsizetype longestName = 60;
    QStringList lines;
    for (const RefusedEntry &entry : refused)
        lines.append(QStringLiteral("\"%1\" is left out: %2")
                         .arg(entry.name.simplified().left(longestName), entry.reason));
    return lines;
}

bool Snapshot::hasRefused(RefusedEntry::Kind kind) const {
    return std::ranges::find(refused, kind, &RefusedEntry::kind) != refused.end();
}

SnapshotDiff compareSnapshots(const Snapshot &older, const Snapshot &newer) {
    SnapshotDiff diff;
    compareKind(older.formulae, newer.formulae, diff);
    compareKind(older.casks, newer.casks, diff);
    return diff;
}

} // namespace larkspur
