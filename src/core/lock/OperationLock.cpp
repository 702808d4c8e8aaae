#include "core/lock/OperationLock.h"

#include "core/async/Completion.h"
#include "core/log/Logger.h"

#include <QTimer>

namespace larkspur {

using namespace std::chrono_literals;

namespace {

constexpr auto lookAgainAfter = 200ms; // no system tells when another process lets go of a file

Task<> pause(std::chrono::milliseconds time) {
    Completion<bool> over;
    QTimer::singleShot(time, [over]() mutable { over.complete(true); });
    co_await over;
}

} // namespace

OperationLock::OperationLock(QString lockFilePath, Logger &logger)
    : m_path(std::move(lockFilePath))
    , m_logger(logger) {}

Task<std::optional<OperationLock::Permit>> OperationLock::acquire(StopToken stop,
                                                                  std::function<void()> onWait) {
    bool hasWaited = isHeld();
    if (hasWaited && onWait)
        onWait();
    auto turn = co_await m_turn.acquire(stop);
    if (!turn)
        co_return std::nullopt;
    while (!stop.stop_requested()) {
        LockFile::Refusal why{};
        auto file = LockFile::tryTake(m_path, why);
        if (!file && why == LockFile::Refusal::NotWritable)
            m_logger.warn(QStringLiteral("The lock file %1 cannot be written").arg(m_path));
        if (file || why == LockFile::Refusal::NotWritable)
            co_return std::optional<Permit>(std::in_place, std::move(*turn), std::move(file));
        if (!hasWaited && onWait)
            onWait();
        hasWaited = true;
        co_await pause(lookAgainAfter);
    }
    co_return std::nullopt;
}

Task<std::optional<OperationLock::Permit>> OperationLock::tryAcquire() {
    if (isHeld())
        co_return std::nullopt;
    auto turn = co_await m_turn.acquire({}); // free: comes at once
    LockFile::Refusal why{};
    auto file = LockFile::tryTake(m_path, why);
    if (!file)
        co_return std::nullopt;
    co_return std::optional<Permit>(std::in_place, std::move(*turn), std::move(file));
}

} // namespace larkspur
