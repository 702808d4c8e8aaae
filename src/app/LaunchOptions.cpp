#include "app/LaunchOptions.h"

#include <unistd.h>

namespace larkspur {

LaunchOptions parseLaunchOptions(int argc, char *argv[]) {
    LaunchOptions options;
    const QString folderOption = QStringLiteral("--sample-folder=");
    for (int i = 1; i < argc; ++i) {
        const QString word = QString::fromLocal8Bit(argv[i]);
        // The program's own options come first; everything from the first command word on belongs to the
        // command.
        const bool isOwn = options.commandWords.isEmpty();
        if (isOwn && word == QLatin1String("--sample")) {
            options.sample = true;
        } else if (isOwn && word == QLatin1String("--fresh")) {
            options.fresh = true;
        } else if (isOwn && word.startsWith(folderOption)) {
            options.sample = true;
            options.sampleFolder = word.mid(folderOption.size());
        } else {
            options.commandWords.append(word);
        }
    }
    return options;
}

std::expected<Environment, QString> environmentFor(const LaunchOptions &options) {
    if (options.sample)
        return sampleEnvironment(
            options.sampleFolder.isEmpty() ? defaultSampleFolder() : options.sampleFolder, options.fresh);
    if (::geteuid() == 0)
        return std::unexpected(QStringLiteral("Larkspur does not run as root, as Homebrew does not. "
                                              "Start it as yourself, or try it with --sample."));
    return userEnvironment();
}

} // namespace larkspur
