#include "cli/commands/Commands.h"

namespace larkspur::cli {

std::vector<std::unique_ptr<Command>> makeCommands() {
    std::vector<std::unique_ptr<Command>> commands;
    for (const auto make :
         {makeStatusCommand,  makeListCommand,    makeOutdatedCommand,  makeInfoCommand,
          makeSearchCommand,  makeLeavesCommand,  makePinnedCommand,    makeServicesCommand,
          makeTapsCommand,    makeDepsCommand,    makeSizesCommand,     makeRefreshCommand,
          makeInstallCommand, makeUpgradeCommand, makeReinstallCommand, makeUninstallCommand,
          makePinCommand,     makeUnpinCommand,   makeSnapshotCommand,  makeRollbackCommand,
          makeKegsCommand,    makeSnoozeCommand,  makeUnsnoozeCommand,  makeSnoozedCommand,
          makeHistoryCommand, makeLogCommand})
        commands.push_back(make());
    return commands;
}

} // namespace larkspur::cli
