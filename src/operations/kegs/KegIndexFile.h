#pragma once

#include "core/lock/LockFile.h"
#include "operations/kegs/KegEntry.h"
#include "operations/kegs/KegPlaces.h"

namespace larkspur {

/// The list of preserved kegs in its file, which several programs may change. Blocking. Errors are one line
/// of text.
class KegIndexFile {
  public:
    explicit KegIndexFile(const KegPlaces &places)
        : m_path(places.index())
        , m_lock(places.indexLock()) {}

    /// Keeps other programs from changing it.
    std::expected<LockFile, QString> lock() const;
    /// What can be read of it.
    QList<KegEntry> read();
    /// Whether that was all, when it was read.
    bool isWhole() const { return m_isWhole; }
    /// Why it could not be read then although it may be whole: one line of text, empty if it could.
    const QString &failure() const { return m_failure; }
    /// What was there and could not be read is kept beside the new list, once.
    std::expected<void, QString> write(const QList<KegEntry> &entries);

  private:
    QString m_path;
    QString m_lock;
    QString m_failure;
    bool m_isWhole = false;
    bool m_isUnreadable = false; ///< there is one that is not whole
};

} // namespace larkspur
