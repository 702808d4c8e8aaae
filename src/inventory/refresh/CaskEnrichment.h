#pragma once

#include "core/async/Task.h"
#include "inventory/records/Cask.h"

#include <QHash>

namespace larkspur {

/// What the installed bundle and the install receipt of a cask say.
struct CaskFacts {
    std::optional<QString> actualVersion;
    std::optional<QString> actualBuild;
    std::optional<QDateTime> installedOn;
};

/// Reads from the disk what Homebrew's list does not tell of the installed casks. Works in the background.
class CaskEnrichment {
  public:
    /// `applicationFolders`: where bundles are looked for when the receipt names no place.
    explicit CaskEnrichment(QStringList applicationFolders);

    /// The facts by token; casks whose bundle cannot be found have none.
    Task<QHash<QString, CaskFacts>> read(QString brewPrefix, QList<Cask> casks);

  private:
    QStringList m_applicationFolders;
};

/// The same for one cask, blocking.
CaskFacts readCaskFacts(const QString &caskroom, const Cask &cask, const QStringList &applicationFolders);

} // namespace larkspur
