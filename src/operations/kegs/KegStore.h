#pragma once

#include "core/trees/TreeScan.h"
#include "operations/kegs/KegIndexFile.h"
#include "operations/kegs/KegPlaces.h"

#include <QHash>

namespace larkspur {

class TreeSync;

/// The folder with the preserved kegs and its index. Blocking; one user at a time within the program, while
/// other programs may use the same folder: every change starts from the index as it is then, under a lock
/// file, and fails where that lock cannot be had. A copy is made aside and takes its place when it is whole
/// and on the disk; its entry is written after that, so that whatever happens the index names only whole
/// copies. The folder may be a link; what a link in it leads to is neither moved nor removed. Errors are one
/// line of text.
class KegStore {
  public:
    /// `sync` outlives the store.
    KegStore(QString folder, TreeSync &sync);

    const QString &folder() const { return m_places.folder(); }
    /// As of the last change or `load`.
    const QList<KegEntry> &entries() const { return m_entries; }
    /// Reads the index.
    void load();
    /// Why nobody knows what is kept, as of then: one line of text, empty if it is known. Nothing is changed
    /// meanwhile.
    const QString &failure() const { return m_failure; }
    std::optional<KegEntry> entry(const QString &formula, const QString &version) const;
    /// Where the copy of an entry lies.
    QString copyPath(const QString &formula, const QString &version) const {
        return m_places.copy(formula, version);
    }

    /// A fresh place for a copy in the making.
    QString partialPath() const;
    /// Gives a finished copy its place and its entry, in place of an earlier copy of the same version, which
    /// stays if that fails. The scan is what the copy must hold. After a failure the copy in the making is
    /// gone.
    std::expected<void, QString> adopt(const QString &partial, const TreeScan &scan, const KegEntry &entry);

    /// Whether the copy still holds what was preserved, to the byte.
    bool isIntact(const QString &formula, const QString &version) const;
    /// The same; the error says why not.
    std::expected<void, QString> check(const QString &formula, const QString &version) const;
    std::expected<void, QString> remove(const QString &formula, const QString &version);

    /// Removes the oldest copies until the rest takes no more than `cap` bytes on the disk, as measured; what
    /// was made for `kept` stays. Returns what was removed.
    std::expected<QList<KegEntry>, QString> enforceCap(qint64 cap, const std::optional<QUuid> &kept);

    /// Whether there is anything that the index does not know, or that it knows and is gone.
    bool needsSweep() const;
    /// Removes what a crash has left: copies in the making or being removed, and entries without a copy. A
    /// whole copy without an entry gets one, and what is neither is nobody's leftover: it is left alone.
    std::expected<void, QString> sweep();

  private:
    std::expected<LockFile, QString> beginChange();
    std::expected<void, QString> place(const QString &partial, const KegEntry &entry);
    std::expected<void, QString> removeEntry(const QString &formula, const QString &version);
    std::expected<void, QString> moveOut(const QString &formula, const QString &version,
                                         const QString &to) const;
    QHash<QString, qint64> measuredSizes() const;
    const KegEntry *oldest(const std::optional<QUuid> &kept) const;
    void settleReplacement(const KegPlaces::Copy &replaced) const;
    void rebuild();

    KegPlaces m_places;
    KegIndexFile m_index;
    TreeSync &m_sync;
    QList<KegEntry> m_entries;
    QString m_failure;
};

} // namespace larkspur
