#include "core/lock/OperationLock.h"

#include "core/async/Completion.h"

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

OperationLock::OperationLock(QString lockFilePath, const ProcessTable &processes)
    : m_path(std::move(lockFilePath))
    , m_processes(processes) {}

Task<Result<OperationLock::Permit>> OperationLock::acquire(StopToken stop,
                                                           std::function<void(const QStringList &)> onWait) {
    std::optional<QStringList> told; // what the caller knows about those who hold it
    const auto tell = [&](const QStringList &orphans) {
        if (onWait && told != orphans)
            onWait(orphans);
        told = orphans;
    };
    if (isHeld())
        tell({});
    auto turn = co_await m_turn.acquire(stop);
    while (turn && !stop.stop_requested()) {
        auto file = LockFile::tryTake(m_path);
        if (file)
            co_return Permit(std::move(*turn), std::move(*file));
        if (!file.error().isHeld)
            co_return std::unexpected(BrewError::commandFailed(
                QStringLiteral("The operation lock cannot be taken. ") + file.error().reason));
        if (!told || told->isEmpty()) // afterwards it is known
            tell(LockFile::orphansAt(m_path, m_processes));
        co_await pause(lookAgainAfter);
    }
    co_return std::unexpected(BrewError::stopped());
}

OperationLock::Others OperationLock::others() const {
    const auto file = isHeld() ? std::unexpected(LockFile::Refusal{}) : LockFile::tryTake(m_path);
    if (file || !file.error().isHeld)
        return {};
    return {.areThere = true, .orphans = LockFile::orphansAt(m_path, m_processes)};
}

} // namespace larkspur
