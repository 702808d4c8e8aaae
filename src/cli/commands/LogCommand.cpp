#include "app/Larkspur.h"
#include "cli/commands/Commands.h"

#include <QFile>

namespace larkspur::cli {

namespace {

class LogCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("log"),
                .synopsis = QStringLiteral("[--path]"),
                .summary = QStringLiteral("Prints the activity log, or with --path where it is."),
                .options = {QStringLiteral("--path")}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        Logger &logger = context.larkspur.logger();
        if (arguments.has("--path")) {
            context.terminal.line(logger.filePath());
            co_return ExitStatus::Done;
        }
        for (const QString &path : {logger.previousFilePath(), logger.filePath()}) {
            QFile file(path);
            if (file.open(QIODevice::ReadOnly))
                context.terminal.raw(QString::fromUtf8(file.readAll()));
        }
        co_return ExitStatus::Done;
    }
};

} // namespace

std::unique_ptr<Command> makeLogCommand() {
    return std::make_unique<LogCommand>();
}

} // namespace larkspur::cli
