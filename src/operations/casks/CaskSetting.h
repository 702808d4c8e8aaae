#pragma once

#include <QString>
#include <QStringList>

namespace larkspur {

class Trash;

/// What those work with who keep the applications of casks from being lost.
struct CaskSetting {
    QString noteFolder; ///< for notes about what a crash would leave
    Trash *trash;
    QString prefix;                 ///< of Homebrew
    QStringList applicationFolders; ///< where casks put their applications
};

} // namespace larkspur
