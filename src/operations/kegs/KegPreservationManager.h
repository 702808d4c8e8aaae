#pragma once

#include "core/async/FairSemaphore.h"
#include "operations/kegs/KegStore.h"
#include "operations/recovery/Leftover.h"

#include <QObject>

#include <memory>

namespace larkspur {

class Logger;
class Preferences;
class TreeCopier;
class TreeSync;

/// Keeps copies of kegs that upgrades replace, so that an upgrade can be undone without a rebuild or a
/// download. All work on the files happens off the main thread, one piece after another.
class KegPreservationManager : public QObject {
    Q_OBJECT
  public:
    using Entry = KegEntry;

    static constexpr qint64 defaultCap = qint64{2} * 1024 * 1024 * 1024;
    /// A copy is not made if less than this would be left on its volume.
    static constexpr qint64 keptFree = qint64{1024} * 1024 * 1024;

    struct Parts {
        Preferences &preferences;
        Logger &logger;
        TreeCopier &copier;
        TreeSync &sync;
        QString defaultFolder;
    };
    explicit KegPreservationManager(Parts parts);

    bool isEnabled() const;
    qint64 cap() const;
    /// Where the copies are kept; below the folder that the person chose, if any.
    QString folder() const;
    /// False if the chosen folder lies on a volume that is not there now.
    bool isLocationAvailable() const;

    const QList<Entry> &entries() const { return m_entries; }
    /// Why nobody knows what is kept: one line of text, empty if it is known.
    const QString &failure() const { return m_store->failure(); }
    QList<Entry> entriesFor(const QString &formula) const;
    bool canRollBack(const QString &formula, const QString &version) const;
    /// Why it cannot, in one line of text; nothing if it can.
    std::optional<QString> obstacle(const QString &formula, const QString &version) const;
    /// The copy's folder; nothing if there is none or its volume is away.
    std::optional<QString> storedFolder(const QString &formula, const QString &version) const;

    /// What is to be preserved.
    struct Keg {
        QString prefix; ///< of Homebrew
        QString formula;
        QString version;
        QString fullName = {};
    };
    /// Who works on the files: how it is stopped, and what its children keep open.
    struct Work {
        StopToken stop = {};
        int keptOpen = -1;
    };
    /// Once it returns the copy is on the disk. The error is one line of text.
    Task<std::expected<Entry, QString>> preserve(Keg keg, std::optional<QUuid> snapshotID, Work work);
    /// Makes room: removes the oldest copies while all together take more than the cap, except those that
    /// were made with the restore point `kept`. Where the cap is not known, nothing is removed.
    Task<> enforceCap(std::optional<QUuid> kept);

    /// Copies a preserved keg to a place that does not exist yet, and makes sure that what arrives is what
    /// was preserved, to the byte, and on the disk. The error says why that is not so, in one line of text;
    /// what was copied until then stays.
    Task<std::expected<void, QString>> restoreCopy(QString formula, QString version, QString to, Work work);
    /// Whether the copy is whole, to the byte.
    Task<bool> verify(QString formula, QString version);
    /// The error is one line of text.
    Task<std::expected<void, QString>> remove(QString formula, QString version);
    /// Takes over what another program has preserved or removed since.
    Task<> reload();
    /// Whether a crash may have left something to sweep.
    bool hasLeftovers() const;
    /// Puts right what a crash has left. Only while no other process can be preserving. The error is one line
    /// of text.
    Task<std::expected<void, QString>> sweep();

  Q_SIGNALS:
    /// The entries, or whether they can be used, are no longer what they were.
    void changed();

  private:
    using StorePtr = std::shared_ptr<KegStore>;
    StorePtr store();
    void publish();

    Parts m_parts;
    FairSemaphore m_queue{1};
    StorePtr m_store;
    QList<Entry> m_entries;
};

/// Copies that were being made or removed.
class KegStoreLeftover final : public Leftover {
  public:
    explicit KegStoreLeftover(KegPreservationManager &kegs)
        : m_kegs(kegs) {}
    bool exists(const QString &prefix) const override;
    Task<> putRight(LockedWork work) override;

  private:
    KegPreservationManager &m_kegs;
};

} // namespace larkspur
