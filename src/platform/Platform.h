#pragma once

#include "core/authorization/MemoryProtection.h"
#include "core/authorization/PasswordStore.h"
#include "core/authorization/PasswordVerifier.h"
#include "core/process/PseudoTerminal.h"

#include <QSettings>
#include <QStringList>

#include <memory>

namespace larkspur {

/// What differs per system, one implementation of each port. The build picks the folder that defines
/// `makePlatform`.
struct Platform {
    std::unique_ptr<PseudoTerminal> terminal;
    std::unique_ptr<PasswordVerifier> passwordVerifier;
    std::unique_ptr<PasswordStore> passwordStore;
    std::unique_ptr<MemoryProtection> memoryProtection;
    /// The system's own store of preferences.
    std::unique_ptr<QSettings> preferenceStore;
    /// Standard locations of the brew executable, in the order of preference.
    QStringList knownBrewPaths;
    /// Folders where applications are installed.
    QStringList applicationFolders;
    /// Program and options that copy a folder with everything that belongs to it.
    QStringList copyTool = {};
    /// An owner-only folder that lives in memory; empty where there is none.
    QString memoryFolder = {};
};

Platform makePlatform();

} // namespace larkspur
