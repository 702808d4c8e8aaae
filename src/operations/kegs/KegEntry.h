#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace larkspur {

/// One preserved keg.
struct KegEntry {
    QString formula;                                ///< short name: what its folder in the Cellar is called
    QString version;                                ///< name of the keg's folder
    qint64 bytes = 0;                               ///< size of the copy on disk
    QDateTime date;                                 ///< of preservation
    std::optional<QUuid> snapshotID = std::nullopt; ///< restore point that was taken before the same upgrade
    QString fullName = {};                          ///< where it differs from the short one

    bool operator==(const KegEntry &) const = default;
};

/// The list of preserved kegs as it is kept on disk.
QByteArray kegIndexText(const QList<KegEntry> &entries);

struct KegIndex {
    QList<KegEntry> entries;
    /// Whether all of the list could be read; what could not is missing from the entries. Names of formulae
    /// and versions are plain: they become folders and words of commands.
    bool isWhole = false;
};
KegIndex kegIndexFromText(const QByteArray &text);

} // namespace larkspur
