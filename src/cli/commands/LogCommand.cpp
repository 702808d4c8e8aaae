#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "core/files/WholeFile.h"

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
        constexpr qint64 largest = 16 * Logger::maxBytes; // a line may be long
        ExitStatus status = ExitStatus::Done;
        for (const QString &path : {logger.previousFilePath(), logger.filePath()}) {
            const auto text = readWholeFile(path, largest);
            if (text)
                context.terminal.text(QString::fromUtf8(*text));
            else if (!text.error().isMissing) {
                context.terminal.error(text.error().reason);
                status = ExitStatus::Failed;
            }
        }
        co_return status;
    }
};

} // namespace

std::unique_ptr<Command> makeLogCommand() {
    return std::make_unique<LogCommand>();
}

} // namespace larkspur::cli
