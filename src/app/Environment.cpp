#include "app/Environment.h"

#include "core/authorization/SudoPasswordVerifier.h"
#include "core/settings/FilePreferenceStore.h"
#include "platform/Platform.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace larkspur {

namespace {

QString sampleBrewExecutable() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/sample-brew");
}

/// The sample's brew is a link to the tool of this build, wherever the sample was made; a brew that somebody
/// has put in its place stays.
bool linkBrew(const QString &link) {
    if (!QFileInfo(link).isSymLink() || QFileInfo(link).symLinkTarget() == sampleBrewExecutable())
        return true;
    QFile::remove(link);
    return QFile::link(sampleBrewExecutable(), link);
}

/// Making a sample replaces these folders: in a folder that is no sample they are somebody's own.
bool holdsSomethingElse(const QString &root) {
    const auto isThere = [&root](const char *name) {
        const QFileInfo info(root + QLatin1Char('/') + QLatin1String(name));
        return info.exists() || info.isSymLink();
    };
    return !isThere("homebrew/Library/sample") &&
           (isThere("homebrew") || isThere("Applications") || isThere("data"));
}

std::expected<void, QString> prepareSample(const QString &prefix, bool fresh) {
    if (!QFileInfo(sampleBrewExecutable()).isExecutable())
        return std::unexpected(
            QStringLiteral("The sample Homebrew is not built: %1").arg(sampleBrewExecutable()));
    const QString brew = prefix + QStringLiteral("/bin/brew");
    if (!fresh && (QFileInfo::exists(brew) || QFileInfo(brew).isSymLink()))
        return linkBrew(brew) ? std::expected<void, QString>()
                              : std::unexpected(QStringLiteral("%1 cannot be written").arg(brew));
    if (QProcess::execute(sampleBrewExecutable(), {QStringLiteral("--create"), prefix}) != 0)
        return std::unexpected(QStringLiteral("The sample Homebrew cannot be made in %1").arg(prefix));
    return {};
}

} // namespace

Environment userEnvironment() {
    Platform platform = makePlatform();
    Environment environment;
    environment.locations = {
        .dataFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                      QStringLiteral("/Larkspur"),
        .knownBrewPaths = platform.knownBrewPaths,
        .applicationFolders = platform.applicationFolders,
        .copyTool = platform.copyTool,
        .memoryFolder = platform.memoryFolder,
    };
    environment.platform = std::move(platform);
    return environment;
}

std::expected<Environment, QString> sampleEnvironment(const QString &folder, bool fresh) {
    const QString root = QDir(folder).absolutePath();
    if (!QDir().mkpath(root))
        return std::unexpected(QStringLiteral("The folder %1 cannot be made").arg(root));
    const QString prefix = root + QStringLiteral("/homebrew");
    if (holdsSomethingElse(root))
        return std::unexpected(
            QStringLiteral("%1 holds something else than a sample Homebrew; name another folder").arg(root));
    if (fresh)
        QDir(root + QStringLiteral("/data")).removeRecursively();
    if (const auto prepared = prepareSample(prefix, fresh); !prepared)
        return std::unexpected(prepared.error());
    Platform platform = makePlatform();
    Environment environment;
    environment.locations = {
        .dataFolder = root + QStringLiteral("/data"),
        .knownBrewPaths = {prefix + QStringLiteral("/bin/brew")},
        .searchPathForBrew = false,
        .readLoginShell = false,
        .applicationFolders = {root + QStringLiteral("/Applications")},
        .asksTheNet = false,
        .copyTool = platform.copyTool,
        .memoryFolder = platform.memoryFolder,
        .titleSuffix = QStringLiteral(" — Sample"),
    };
    platform.preferenceStore = std::make_unique<FilePreferenceStore>(root + QStringLiteral("/data"));
    // The sample has a sudo, a password and an account of its own.
    platform.passwordVerifier =
        std::make_unique<SudoPasswordVerifier>(prefix + QStringLiteral("/Library/sample/sudo"));
    platform.passwordStore = std::make_unique<NullPasswordStore>();
    platform.trash = std::make_unique<FolderTrash>(root + QStringLiteral("/Trash"));
    environment.platform = std::move(platform);
    return environment;
}

QString defaultSampleFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/larkspur-sample");
}

} // namespace larkspur
