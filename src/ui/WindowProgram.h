#pragma once

#include "app/LaunchOptions.h"

namespace larkspur::ui {

/// True if there is a display that a window can open on.
bool hasDisplay();

/// Runs the program with its window: its own application object and event loop. A signal that asks it to end
/// stops what runs first. Returns the exit status.
int runWindowProgram(int argc, char *argv[], const LaunchOptions &options);

} // namespace larkspur::ui
