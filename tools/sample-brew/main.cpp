#include "Brew.h"
#include "Sudo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <csignal>
#include <functional>
#include <unistd.h>

namespace sample {

Arguments::Arguments(const QStringList &words) {
    for (const QString &word : words)
        (word.startsWith(QLatin1Char('-')) ? options : names).append(word);
}

} // namespace sample

namespace {

using Command = std::function<int(sample::Brew &, const sample::Arguments &)>;

const QHash<QString, Command> &commands() {
    static const QHash<QString, Command> table{{QStringLiteral("info"), sample::info},
                                               {QStringLiteral("outdated"), sample::outdated},
                                               {QStringLiteral("leaves"), sample::leaves},
                                               {QStringLiteral("list"), sample::list},
                                               {QStringLiteral("search"), sample::search},
                                               {QStringLiteral("deps"), sample::deps},
                                               {QStringLiteral("uses"), sample::uses},
                                               {QStringLiteral("services"), sample::services},
                                               {QStringLiteral("tap"), sample::tap},
                                               {QStringLiteral("tap-info"), sample::tapInfo},
                                               {QStringLiteral("trust"), sample::trust},
                                               {QStringLiteral("update"), sample::update},
                                               {QStringLiteral("install"), sample::install},
                                               {QStringLiteral("upgrade"), sample::upgrade},
                                               {QStringLiteral("reinstall"), sample::reinstall},
                                               {QStringLiteral("uninstall"), sample::uninstall},
                                               {QStringLiteral("link"), sample::link},
                                               {QStringLiteral("unlink"), sample::unlink},
                                               {QStringLiteral("pin"), sample::pin},
                                               {QStringLiteral("unpin"), sample::unpin}};
    return table;
}

/// Homebrew ends at once on SIGTERM, with status 1 and a word.
extern "C" void onTerminate(int) {
    static const char text[] = "Error: SIGTERM\n";
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text, sizeof text - 1);
    ::_exit(1);
}

int runBrew(const QString &prefix, const QStringList &words) {
    sample::Brew brew{sample::Catalogue::load(), sample::Prefix(prefix), sample::Screen()};
    const QString command = words.value(0);
    if (command == QLatin1String("--version")) {
        brew.screen.line(QStringLiteral(
            "Homebrew 6.0.18\nHomebrew/homebrew-core (git revision 5a3b1c0; last commit 2026-11-22)"));
        return 0;
    }
    if (command == QLatin1String("--prefix") || command == QLatin1String("--repository")) {
        brew.screen.line(prefix);
        return 0;
    }
    if (command == QLatin1String("--cellar") || command == QLatin1String("--caskroom")) {
        brew.screen.line(command == QLatin1String("--cellar") ? brew.prefix.cellar()
                                                              : brew.prefix.caskroom());
        return 0;
    }
    const auto found = commands().constFind(command);
    if (found == commands().constEnd()) {
        brew.screen.error(QStringLiteral("Invalid usage: Unknown command: brew ") + command);
        return 1;
    }
    return (*found)(brew, sample::Arguments(words.mid(1)));
}

} // namespace

int main(int argc, char *argv[]) {
    std::signal(SIGTERM, onTerminate);
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == QLatin1String("--create") && words.size() == 3)
        return sample::createPrefix(sample::Catalogue::load(), words[2],
                                    QCoreApplication::applicationFilePath())
                   ? 0
                   : 1;
    if (words.value(1) == QLatin1String("--sudo-password") && words.size() == 3) {
        QFile input;
        if (!input.open(stdin, QIODevice::ReadOnly))
            return 1;
        sample::setSudoPassword(words[2], input.readAll());
        return 0;
    }
    if (QFileInfo(words[0]).fileName() == QLatin1String("sudo"))
        return sample::sudoMain(
            QDir(QFileInfo(words[0]).absolutePath() + QStringLiteral("/../..")).canonicalPath(),
            words.mid(1));
    // Called through the link PREFIX/bin/brew: its place tells the prefix.
    return runBrew(QFileInfo(words[0]).absoluteDir().absolutePath().section(QLatin1Char('/'), 0, -2),
                   words.mid(1));
}
