#include "app/Larkspur.h"
#include "app/LaunchOptions.h"
#include "cli/TerminalProgram.h"

#include <cstdio>

int main(int argc, char *argv[]) {
    using namespace larkspur;
    const LaunchOptions options = parseLaunchOptions(argc, argv);
    return cli::runTerminalProgram(argc, argv, options);
}
