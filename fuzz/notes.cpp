#include "core/files/Trash.h"
#include "core/log/Logger.h"
#include "operations/casks/LostApplications.h"
#include "operations/casks/MovedAsideLeftover.h"
#include "operations/packages/HeldPin.h"
#include "operations/recovery/LostLinks.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

using namespace larkspur;

/// A Homebrew in which nothing is installed, so that no note leads to a brew.
struct World {
    QTemporaryDir folder;
    Logger logger{folder.filePath(QStringLiteral("Logs"))};
    FolderTrash trash{folder.filePath(QStringLiteral("trash"))};
    QString notes = folder.filePath(QStringLiteral("notes"));
    QString mine = folder.filePath(QStringLiteral("apps/mine.app"));

    World() {
        QDir().mkpath(notes);
        QDir().mkpath(mine);
    }
    void write(const char *kind, const QByteArray &text) const {
        QFile file(notes + QStringLiteral("/1-%1-1.json").arg(QLatin1String(kind)));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            std::abort();
    }
    Task<> putRight(bool *ended) {
        HeldPinLeftover pins(notes);
        LostLinksLeftover links(notes);
        const CaskSetting setting{.noteFolder = notes,
                                  .trash = &trash,
                                  .prefix = {},
                                  .applicationFolders = {QFileInfo(mine).path()}};
        MovedAsideLeftover applications(setting);
        LostApplicationsLeftover upgrades(setting);
        const LockedWork work{.session = nullptr,
                              .context = {},
                              .prefix = folder.filePath(QStringLiteral("prefix")),
                              .logger = &logger};
        for (Leftover *leftover : std::array<Leftover *, 4>{&pins, &links, &applications, &upgrades})
            co_await leftover->putRight(work);
        *ended = true;
    }
};

} // namespace

/// The notes of crashes, as somebody or something may have left them: nothing is moved on their word.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static int count = 1;
    static std::array<char, 6> name{"notes"};
    static std::array<char *, 2> words{name.data(), nullptr};
    static const QCoreApplication application(count, words.data());
    static World world;
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    for (const char *kind : {"held-pin", "links", "moved-aside", "cask-upgrades"})
        world.write(kind, text);
    bool ended = false;
    [[maybe_unused]] const auto running = world.putRight(&ended);
    while (!ended)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (!QDir(world.mine).exists() || QDir(world.folder.filePath(QStringLiteral("trash"))).exists())
        std::abort();
    QDir(world.notes).removeRecursively();
    QDir().mkpath(world.notes);
    return 0;
}
