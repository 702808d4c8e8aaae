#pragma once

#include <QString>
#include <QStringList>

namespace larkspur {

/// Where the program finds Homebrew and keeps its own files. Handed out once, by the composition.
struct Locations {
    /// The program's own folder under the user's application-support folder.
    QString dataFolder;
    /// Standard brew executables, in the order of preference.
    QStringList knownBrewPaths;
    /// Whether `which` may find a brew elsewhere.
    bool searchPathForBrew = true;
    /// Whether HOMEBREW_ variables of the person's login shell are honoured.
    bool readLoginShell = true;
    /// Folders where applications are installed.
    QStringList applicationFolders;
    /// Whether services outside this machine may be asked.
    bool asksTheNet = true;
    /// Program and options that copy a folder with everything that belongs to it.
    QStringList copyTool = {};
    /// An owner-only folder that lives in memory; empty where the system has none.
    QString memoryFolder = {};
    /// Added to the window title; empty for the person's own Homebrew.
    QString titleSuffix = {};

    QString logFolder() const { return dataFolder + QStringLiteral("/Logs"); }
    QString cacheFolder() const { return dataFolder + QStringLiteral("/Cache"); }
    QString askpassScript() const { return dataFolder + QStringLiteral("/larkspur-askpass.sh"); }
    QString askpassSecret() const { return dataFolder + QStringLiteral("/.askpass-secret"); }
    QString crashNotes() const { return dataFolder + QStringLiteral("/CrashNotes"); }
    QString preservedKegs() const { return dataFolder + QStringLiteral("/PreservedKegs"); }
    QString snapshots() const { return dataFolder + QStringLiteral("/Snapshots"); }
    QString operationLock() const { return dataFolder + QStringLiteral("/operation.lock"); }
};

} // namespace larkspur
