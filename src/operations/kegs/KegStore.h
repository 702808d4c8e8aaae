#pragma once

#include "core/lock/LockFile.h"
#include "core/trees/TreeScan.h"
#include "operations/kegs/KegEntry.h"

namespace larkspur {

/// The folder with the preserved kegs and its index. Blocking; one user at a time within the program, while
/// other programs may use the same folder: every change starts from the index as it is then. A copy is made
/// aside and takes its place when it is whole; its entry is written after that, so that whatever happens the
/// index names only whole copies.
class KegStore {
  public:
    explicit KegStore(QString folder);

    const QString &folder() const { return m_folder; }
    /// As of the last change or `load`.
    const QList<KegEntry> &entries() const { return m_entries; }
    /// Reads the index.
    void load();
    std::optional<KegEntry> entry(const QString &formula, const QString &version) const;
    /// Where the copy of an entry lies.
    QString copyPath(const QString &formula, const QString &version) const;

    /// A fresh place for a copy in the making.
    QString partialPath() const;
    /// Gives a finished copy its place and its entry, in place of an earlier copy of the same version. The
    /// scan is what the copy must hold. The error is one line of text; the copy in the making is then gone.
    std::expected<void, QString> adopt(const QString &partial, const TreeScan &scan, const KegEntry &entry);

    /// Whether the copy still holds what was preserved, to the byte.
    bool isIntact(const QString &formula, const QString &version) const;
    bool remove(const QString &formula, const QString &version);

    /// Removes the oldest copies until the rest takes no more than `cap` bytes; what was made for `kept`
    /// stays.
    QList<KegEntry> enforceCap(qint64 cap, const std::optional<QUuid> &kept);

    /// Whether there is anything that the index does not know, or that it knows and is gone.
    bool needsSweep() const;
    /// Removes what a crash has left: copies in the making, and copies without an entry. Where the index
    /// itself is gone or damaged it is made anew from the copies instead.
    void sweep();

  private:
    QString manifestPath(const QString &formula, const QString &version) const;
    std::optional<LockFile> beginChange();
    bool removeEntry(const QString &formula, const QString &version);
    bool save() const;
    void rebuild();

    QString m_folder;
    bool m_hasIndex = false; ///< one that could be read, when it was loaded
    QList<KegEntry> m_entries;
};

} // namespace larkspur
