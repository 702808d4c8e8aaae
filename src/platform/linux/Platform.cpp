#include "platform/Platform.h"

#include "platform/linux/NativePseudoTerminal.h"

#include <QDir>
#include <QStandardPaths>

namespace larkspur {

Platform makePlatform() {
    return {
        .terminal = std::make_unique<NativePseudoTerminal>(),
        .preferenceStore = std::make_unique<QSettings>(
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                QStringLiteral("/Larkspur/preferences.ini"),
            QSettings::IniFormat),
        .knownBrewPaths = {QStringLiteral("/opt/homebrew/bin/brew"), QStringLiteral("/usr/local/bin/brew"),
                           QStringLiteral("/opt/workbrew/bin/brew"),
                           QStringLiteral("/home/linuxbrew/.linuxbrew/bin/brew")},
        .applicationFolders = {QDir::homePath() + QStringLiteral("/.config/apps"),
                               QStringLiteral("/Applications")},
    };
}

} // namespace larkspur
