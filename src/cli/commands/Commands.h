#pragma once

#include "cli/Command.h"

#include <vector>

namespace larkspur::cli {

/// One of each command, in the order of the help text.
std::vector<std::unique_ptr<Command>> makeCommands();

std::unique_ptr<Command> makeStatusCommand();
std::unique_ptr<Command> makeListCommand();
std::unique_ptr<Command> makeOutdatedCommand();
std::unique_ptr<Command> makeInfoCommand();
std::unique_ptr<Command> makeSearchCommand();
std::unique_ptr<Command> makeLeavesCommand();
std::unique_ptr<Command> makePinnedCommand();
std::unique_ptr<Command> makeServicesCommand();
std::unique_ptr<Command> makeTapsCommand();
std::unique_ptr<Command> makeDepsCommand();
std::unique_ptr<Command> makeSizesCommand();
std::unique_ptr<Command> makeRefreshCommand();
std::unique_ptr<Command> makeInstallCommand();
std::unique_ptr<Command> makeReinstallCommand();
std::unique_ptr<Command> makeUninstallCommand();
std::unique_ptr<Command> makePinCommand();
std::unique_ptr<Command> makeUnpinCommand();
std::unique_ptr<Command> makeUpgradeCommand();
std::unique_ptr<Command> makeSnapshotCommand();
std::unique_ptr<Command> makeRollbackCommand();
std::unique_ptr<Command> makeKegsCommand();
std::unique_ptr<Command> makeSnoozeCommand();
std::unique_ptr<Command> makeUnsnoozeCommand();
std::unique_ptr<Command> makeSnoozedCommand();
std::unique_ptr<Command> makeHistoryCommand();
std::unique_ptr<Command> makeLogCommand();

} // namespace larkspur::cli
