#include "platform/Platform.h"

#include "platform/macos/DirectoryPasswordVerifier.h"
#include "platform/macos/KernelProcessTable.h"
#include "platform/macos/KeychainPasswordStore.h"
#include "platform/macos/ProcessDumps.h"
#include "platform/macos/ScriptPseudoTerminal.h"
#include "platform/macos/SystemPreferenceStore.h"
#include "platform/macos/SystemTrash.h"

#include <QDir>

namespace larkspur {

Platform makePlatform() {
    return {
        .terminal = std::make_unique<ScriptPseudoTerminal>(),
        .processes = std::make_unique<KernelProcessTable>(),
        .passwordVerifier = std::make_unique<DirectoryPasswordVerifier>(),
        .passwordStore = std::make_unique<KeychainPasswordStore>(),
        .memoryProtection = std::make_unique<ProcessDumps>(),
        .trash = std::make_unique<SystemTrash>(),
        .treeSync = std::make_unique<FileByFileSync>(),
        // The user defaults of com.ferncastle.larkspur.
        .preferenceStore = std::make_unique<SystemPreferenceStore>(QStringLiteral("ferncastle.com"),
                                                                   QStringLiteral("larkspur")),
        .knownBrewPaths = {QStringLiteral("/opt/homebrew/bin/brew"), QStringLiteral("/usr/local/bin/brew"),
                           QStringLiteral("/opt/workbrew/bin/brew")},
        .applicationFolders = {QStringLiteral("/Applications"),
                               QDir::homePath() + QStringLiteral("/Applications")},
        .copyTool = {QStringLiteral("/usr/bin/ditto")},
    };
}

} // namespace larkspur
