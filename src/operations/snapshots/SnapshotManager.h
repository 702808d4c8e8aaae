#pragma once

#include "core/async/Task.h"
#include "operations/snapshots/SnapshotFiles.h"

#include <QObject>

namespace larkspur {

class InstalledPackages;
class InventoryQueries;
class Logger;
class Preferences;

/// Takes, keeps and forgets restore points. Files change first, then the list.
class SnapshotManager : public QObject {
    Q_OBJECT
  public:
    static constexpr qint64 defaultRetention = 30;

    struct Parts {
        InventoryQueries &queries;
        Preferences &preferences;
        Logger &logger;
        QString folder;
    };
    explicit SnapshotManager(Parts parts);

    /// Reads the files; called by whoever needs the list first, and again to see what another process did.
    Task<> load();
    bool hasLoaded() const { return m_hasLoaded; }

    const QList<Snapshot> &snapshots() const { return m_contents.snapshots; } ///< newest first
    const QStringList &unreadable() const { return m_contents.unreadable; }
    /// Why nobody knows which there are: one line of text, empty if the files could be read.
    const QString &failure() const { return m_contents.failure; }
    const Snapshot *find(const QUuid &id) const;
    /// The one whose id begins with the text; null if there is none or more than one.
    const Snapshot *find(const QString &idBeginning) const;

    /// What is installed now, as a snapshot without a file. The error is one line of text.
    Task<std::expected<Snapshot, QString>> current(StopToken stop = {});
    /// Takes a restore point of what is installed now.
    Task<std::expected<Snapshot, QString>> take(SnapshotTrigger trigger, std::optional<QString> note = {},
                                                StopToken stop = {});
    /// The same from what was just read, with a query for the taps alone.
    Task<std::expected<Snapshot, QString>> take(SnapshotTrigger trigger, const InstalledPackages *installed,
                                                StopToken stop);

    /// These are false if a file could not be written or removed, or may not be written because some of it
    /// was refused; the list then says what is still so. While nobody knows which there are, not all is
    /// removed.
    Task<bool> setNote(QUuid id, QString note);
    Task<bool> remove(QList<QUuid> ids);
    Task<bool> removeAll();

  Q_SIGNALS:
    void changed();

  private:
    Task<std::expected<Snapshot, QString>> keep(Snapshot snapshot);
    Task<> applyRetention();

    Parts m_parts;
    SnapshotFiles m_files;
    SnapshotFiles::Contents m_contents;
    bool m_hasLoaded = false;
};

} // namespace larkspur
