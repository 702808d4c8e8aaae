#pragma once

#include <QDateTime>
#include <QList>
#include <QStringList>
#include <QUuid>

#include <expected>
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

/// An entry of a file that is no package or tap: restoring it would run something else. Left out, and said.
struct RefusedEntry {
    enum class Kind { Formula, Cask, Tap };

    Kind kind = Kind::Formula;
    QString name; ///< as it stood there
    QString reason;

    bool operator==(const RefusedEntry &) const = default;
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
    QList<RefusedEntry> refused = {}; ///< when it was read; not written

    /// One line each, for people.
    QStringList refusals() const;
    bool hasRefused(RefusedEntry::Kind kind) const;
    qsizetype packageCount() const { return formulae.size() + casks.size(); }
    bool operator==(const Snapshot &) const = default;
};

/// How many entries each list of a file may have; one with more is refused as a whole.
constexpr qsizetype mostSnapshotEntries = 20'000; // more packages than exist for any one machine

QString snapshotTriggerName(SnapshotTrigger trigger);

QByteArray snapshotText(const Snapshot &snapshot);
/// Names of packages and taps and versions of those that it returns can be given to brew. The error, if the
/// text is no snapshot, is one line of text. Keys that are not known are passed over.
std::expected<Snapshot, QString> snapshotFromText(const QByteArray &text);

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
