#pragma once

#include <QDateTime>
#include <QList>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace larkspur {

enum class SnapshotTrigger { Manual, PreUpgrade, Scheduled };

/// One package as it was.
struct SnapshotEntry {
    QString name;
    QString version;
    bool isCask = false;

    bool operator==(const SnapshotEntry &) const = default;
};

/// A restore point: which packages and taps were there at one moment.
struct Snapshot {
    QUuid id;
    QDateTime date;
    SnapshotTrigger trigger = SnapshotTrigger::Manual;
    QList<SnapshotEntry> formulae = {};
    QList<SnapshotEntry> casks = {};
    QStringList taps = {};
    std::optional<QString> note = std::nullopt;

    qsizetype packageCount() const { return formulae.size() + casks.size(); }
    bool operator==(const Snapshot &) const = default;
};

QString snapshotTriggerName(SnapshotTrigger trigger);

QByteArray snapshotText(const Snapshot &snapshot);
/// Nothing if the text is no snapshot. Keys that are not known are passed over.
std::optional<Snapshot> snapshotFromText(const QByteArray &text);

/// A package whose version differs between two moments.
struct SnapshotVersionChange {
    SnapshotEntry entry; ///< as it was
    QString currentVersion;

    bool operator==(const SnapshotVersionChange &) const = default;
};

struct SnapshotDiff {
    QList<SnapshotEntry> removed; ///< in the older one only
    QList<SnapshotEntry> added;   ///< in the newer one only
    QList<SnapshotVersionChange> changed;

    bool isEmpty() const { return removed.isEmpty() && added.isEmpty() && changed.isEmpty(); }
};

/// Linear in the number of entries.
SnapshotDiff compareSnapshots(const Snapshot &older, const Snapshot &newer);

} // namespace larkspur
