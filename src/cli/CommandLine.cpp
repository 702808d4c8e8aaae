#include "cli/CommandLine.h"

#include "cli/commands/Commands.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

/// Number of letters to insert, delete or change.
int distance(const QString &left, const QString &right) {
    QList<int> row(right.size() + 1);
    for (qsizetype j = 0; j <= right.size(); ++j)
        row[j] = static_cast<int>(j);
    for (qsizetype i = 1; i <= left.size(); ++i) {
        int diagonal = row[0];
        row[0] = static_cast<int>(i);
        for (qsizetype j = 1; j <= right.size(); ++j) {
            const int above = row[j];
            row[j] = left[i - 1] == right[j - 1] ? diagonal : 1 + std::min({above, row[j - 1], diagonal});
            diagonal = above;
        }
    }
    return row[right.size()];
}

} // namespace

CommandRegistry::CommandRegistry()
    : m_commands(makeCommands()) {}

Command *CommandRegistry::find(const QString &name) const {
    const auto found =
        std::ranges::find_if(m_commands, [&](const auto &command) { return command->shape().name == name; });
    return found == m_commands.end() ? nullptr : found->get();
}

Command *CommandRegistry::nearest(const QString &name) const {
    constexpr int farthest = 3;
    const auto best = std::ranges::min_element(
        m_commands, {}, [&](const auto &command) { return distance(name, command->shape().name); });
    const int letters = distance(name, (*best)->shape().name);
    return letters <= farthest && letters < name.size() ? best->get() : nullptr;
}

QString CommandRegistry::overview() const {
    qsizetype widest = 0;
    for (const auto &command : m_commands)
        widest = std::max(widest, command->shape().name.size());
    QString text = QStringLiteral("Usage: larkspur [--sample] [COMMAND]\n\n"
                                  "Without a command the window opens. Commands:\n\n");
    for (const auto &command : m_commands)
        text += QStringLiteral("  ") + command->shape().name.leftJustified(widest + 2) +
                command->shape().summary + QLatin1Char('\n');
    return text + QStringLiteral(
                      "\n\"larkspur help COMMAND\" tells more about one. With --sample everything happens to "
                      "a sample\nHomebrew of invented packages; --fresh makes that sample anew.\n\n"
                      "Exit status: 0 done, 1 failed, 2 wrong usage, 3 done with warnings, 4 no Homebrew.\n");
}

QString CommandRegistry::help(const Command &command) const {
    const CommandShape shape = command.shape();
    return QStringLiteral("Usage: larkspur %1 %2").arg(shape.name, shape.synopsis).trimmed() +
           QStringLiteral("\n\n%1\n").arg(shape.summary) +
           (shape.details.isEmpty() ? QString() : QStringLiteral("\n%1\n").arg(shape.details));
}

namespace {

bool takes(const CommandShape &shape, const QString &option) {
    return shape.options.contains(option) ||
           std::ranges::any_of(shape.verbs,
                               [&](const QStringList &options) { return options.contains(option); });
}

/// Why the verb and its options do not go together; empty if they do.
QString complaintAboutVerb(const CommandShape &shape, const CommandArguments &arguments) {
    if (shape.verbs.isEmpty())
        return {};
    const QString verb = arguments.names.first();
    if (!shape.verbs.contains(verb))
        return QStringLiteral("%1 has no \"%2\"").arg(shape.name, verb);
    for (const QString &option : arguments.options)
        if (!shape.verbs[verb].contains(option))
            return QStringLiteral("%1 does not go with \"%2 %3\"").arg(option, shape.name, verb);
    return {};
}

} // namespace

std::expected<CommandArguments, QString> parseArguments(const CommandShape &shape, const QStringList &words) {
    CommandArguments arguments;
    bool onlyNames = false;
    for (const QString &word : words) {
        if (word == QLatin1String("--") && !onlyNames)
            onlyNames = true;
        else if (onlyNames || !word.startsWith(QLatin1Char('-')))
            arguments.names.append(word);
        else if (takes(shape, word))
            arguments.options.insert(word);
        else
            return std::unexpected(QStringLiteral("unknown option %1").arg(word));
    }
    if (arguments.names.size() < shape.fewestNames)
        return std::unexpected(QStringLiteral("a name is missing"));
    if (const QString complaint = complaintAboutVerb(shape, arguments); !complaint.isEmpty())
        return std::unexpected(complaint);
    if (shape.mostNames >= 0 && arguments.names.size() > shape.mostNames)
        return std::unexpected(QStringLiteral("too many words: %1").arg(arguments.names[shape.mostNames]));
    return arguments;
}

Task<ExitStatus> runCommandLine(CommandContext context, QStringList words) {
    const Terminal &terminal = context.terminal;
    const CommandRegistry registry;
    const QString name = words.isEmpty() ? QStringLiteral("help") : words.takeFirst();
    if (name == QLatin1String("help") || name == QLatin1String("--help")) {
        const Command *topic = words.isEmpty() ? nullptr : registry.find(words.first());
        if (!words.isEmpty() && !topic) {
            terminal.error(QStringLiteral("no command is called %1").arg(words.first()));
            co_return ExitStatus::WrongUsage;
        }
        terminal.text(topic ? registry.help(*topic) : registry.overview());
        co_return ExitStatus::Done;
    }
    Command *command = registry.find(name);
    if (!command) {
        const Command *near = registry.nearest(name);
        terminal.error(QStringLiteral("no command is called %1.").arg(name) +
                       (near ? QStringLiteral(" Did you mean %1?").arg(near->shape().name)
                             : QStringLiteral(" \"larkspur help\" lists them.")));
        co_return ExitStatus::WrongUsage;
    }
    if (words.contains(QLatin1String("--help"))) {
        terminal.text(registry.help(*command));
        co_return ExitStatus::Done;
    }
    const auto arguments = parseArguments(command->shape(), words);
    if (!arguments) {
        terminal.error(arguments.error());
        terminal.error(registry.help(*command).section(QLatin1Char('\n'), 0, 0));
        co_return ExitStatus::WrongUsage;
    }
    co_return co_await command->run(std::move(context), *arguments);
}

} // namespace larkspur::cli
