#include "app/LaunchOptions.h"
#include "cli/TerminalProgram.h"
#include "core/process/StandardStreams.h"
#include "ui/WindowProgram.h"

#include <cstdio>

int main(int argc, char *argv[]) {
    using namespace larkspur;
    fillMissingStreams();
    LaunchOptions options = parseLaunchOptions(argc, argv);
    if (options.wantsWindow() && ui::hasDisplay())
        return ui::runWindowProgram(argc, argv, options);
    if (options.wantsWindow()) {
        std::fputs("larkspur: there is no display for the window; this is what \"larkspur status\" shows:\n",
                   stderr);
        options.commandWords = {QStringLiteral("status")};
    }
    return cli::runTerminalProgram(argc, argv, options);
}
