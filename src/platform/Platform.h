#pragma once

#include "core/process/PseudoTerminal.h"

#include <QSettings>
#include <QStringList>

#include <memory>

namespace larkspur {

/// What differs per system, one implementation of each port. The build picks the folder that defines
/// `makePlatform`.
struct Platform {
    std::unique_ptr<PseudoTerminal> terminal;
    /// The system's own store of preferences.
    std::unique_ptr<QSettings> preferenceStore;
    /// Standard locations of the brew executable, in the order of preference.
    QStringList knownBrewPaths;
    /// Folders where applications are installed.
    QStringList applicationFolders;
};

Platform makePlatform();

} // namespace larkspur
