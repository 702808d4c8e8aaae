#pragma once

#include "operations/snapshots/Snapshot.h"

#include <expected>

namespace larkspur {

/// The folder of restore points, one file each, named after its id. Blocking.
class SnapshotFiles {
  public:
    explicit SnapshotFiles(QString folder)
        : m_folder(std::move(folder)) {}

    struct Contents {
        QList<Snapshot> snapshots; ///< newest first
        QStringList unreadable;    ///< files that are no restore points, with the reason; they are left alone
        QString failure = {};      ///< why the folder cannot be read, one line of text; empty if it can
    };
    /// The list is empty after a failure.
    Contents load() const;

    std::expected<void, QString> write(const Snapshot &snapshot) const;
    bool remove(const QUuid &id) const;

  private:
    QString path(const QUuid &id) const;

    QString m_folder;
};

} // namespace larkspur
