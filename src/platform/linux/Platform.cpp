#include "platform/Platform.h"

#include "core/settings/FilePreferenceStore.h"
#include "platform/linux/DesktopTrash.h"
#include "platform/linux/NativePseudoTerminal.h"
#include "platform/linux/PamPasswordVerifier.h"
#include "platform/linux/ProcProcessTable.h"
#include "platform/linux/ProcessDumps.h"
#include "platform/linux/VolumeSync.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <unistd.h>

namespace larkspur {

namespace {

/// The session's runtime folder, if it is what it should be: the person's own, and closed to others.
QString runtimeFolder() {
    const QFileInfo folder(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    const auto others = QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther;
    const bool isPrivate = folder.isDir() && folder.isWritable() && folder.ownerId() == ::getuid() &&
                           !(folder.permissions() & others);
    return isPrivate ? folder.absoluteFilePath() : QString();
}

} // namespace

Platform makePlatform() {
    return {
        .terminal = std::make_unique<NativePseudoTerminal>(),
        .processes = std::make_unique<ProcProcessTable>(),
        .passwordVerifier = std::make_unique<PamPasswordVerifier>(),
        .passwordStore = std::make_unique<NullPasswordStore>(),
        .memoryProtection = std::make_unique<ProcessDumps>(),
        .trash = std::make_unique<DesktopTrash>(),
        .treeSync = std::make_unique<VolumeSync>(),
        .preferenceStore = std::make_unique<FilePreferenceStore>(
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
            QStringLiteral("/Larkspur")),
        .knownBrewPaths = {QStringLiteral("/opt/homebrew/bin/brew"), QStringLiteral("/usr/local/bin/brew"),
                           QStringLiteral("/opt/workbrew/bin/brew"),
                           QStringLiteral("/home/linuxbrew/.linuxbrew/bin/brew")},
        .applicationFolders = {QDir::homePath() + QStringLiteral("/.config/apps"),
                               QStringLiteral("/Applications")},
        .copyTool = {QStringLiteral("/bin/cp"), QStringLiteral("-a"), QStringLiteral("--reflink=auto")},
        .memoryFolder = runtimeFolder(),
    };
}

} // namespace larkspur
