#include "core/lock/ChangeLock.h"

#include <chrono>
#include <thread>

namespace larkspur {

std::expected<LockFile, QString> lockForChange(const QString &path, const QString &what) {
    // Another program holds it for milliseconds.
    constexpr int mostAttempts = 100;
    constexpr auto pause = std::chrono::milliseconds(25);
    auto lock = LockFile::tryTake(path);
    for (int i = 0; i < mostAttempts && !lock && lock.error().isHeld; ++i) {
        std::this_thread::sleep_for(pause);
        lock = LockFile::tryTake(path);
    }
    if (lock)
        return std::move(*lock);
    return std::unexpected(lock.error().isHeld ? QStringLiteral("another program is changing %1").arg(what)
                                               : lock.error().reason);
}

} // namespace larkspur
