#pragma once

#include "core/authorization/MemoryProtection.h"
#include "core/authorization/PasswordStore.h"
#include "core/authorization/PasswordVerifier.h"
#include "core/files/Trash.h"
#include "core/process/ProcessTable.h"
#include "core/process/PseudoTerminal.h"
#include "core/settings/PreferenceStore.h"
#include "core/trees/TreeSync.h"

#include <QStringList>

#include <memory>

namespace larkspur {

/// What differs per system, one implementation of each port. The build picks the folder that defines
/// `makePlatform`.
struct Platform {
    std::unique_ptr<PseudoTerminal> terminal;
    std::unique_ptr<ProcessTable> processes;
    std::unique_ptr<PasswordVerifier> passwordVerifier;
    std::unique_ptr<PasswordStore> passwordStore;
    std::unique_ptr<MemoryProtection> memoryProtection;
    std::unique_ptr<Trash> trash;
    std::unique_ptr<TreeSync> treeSync;
    /// The system's own store of preferences.
    std::unique_ptr<PreferenceStore> preferenceStore;
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
