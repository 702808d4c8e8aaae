#pragma once

#include "app/Environment.h"

#include <QStringList>

namespace larkspur {

/// What the program's own command line asks for.
struct LaunchOptions {
    bool sample = false;      ///< --sample: the sample Homebrew
    bool fresh = false;       ///< --fresh: the sample is made anew
    QString sampleFolder;     ///< --sample-folder=DIR: where it stands; the usual place if empty
    QStringList commandWords; ///< a terminal command and its words; empty: the window

    bool wantsWindow() const { return commandWords.isEmpty(); }
};

LaunchOptions parseLaunchOptions(int argc, char *argv[]);

/// The environment that the options ask for. Refuses to run as root on the person's own Homebrew. Needs an
/// application object. The error is one line of text.
std::expected<Environment, QString> environmentFor(const LaunchOptions &options);

} // namespace larkspur
