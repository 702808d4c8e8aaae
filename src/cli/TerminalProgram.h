#pragma once

#include "app/LaunchOptions.h"

namespace larkspur::cli {

/// Runs the program as a terminal command: its own application object and event loop. Ctrl-C, a closed
/// terminal and an output that takes nothing any more stop what runs. Returns the exit status.
int runTerminalProgram(int argc, char *argv[], const LaunchOptions &options);

} // namespace larkspur::cli
