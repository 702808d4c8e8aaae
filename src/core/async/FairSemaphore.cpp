#include "core/async/FairSemaphore.h"

#include <algorithm>
#include <functional>

namespace larkspur {

struct FairSemaphore::Permit::State {
    int free = 0;
    std::deque<Completion<bool>> waiters; // completed with true: the waiter holds a permit
};

FairSemaphore::Permit::Permit(std::shared_ptr<State> state)
    : m_state(std::move(state)) {}

FairSemaphore::Permit::Permit(Permit &&other) noexcept
    : m_state(std::exchange(other.m_state, nullptr)) {}

FairSemaphore::Permit &FairSemaphore::Permit::operator=(Permit &&other) noexcept {
    if (this != &other) {
        release();
        m_state = std::exchange(other.m_state, nullptr);
    }
    return *this;
}

void FairSemaphore::Permit::release() {
    const auto state = std::exchange(m_state, nullptr);
    if (!state)
        return;
    while (!state->waiters.empty()) {
        Completion<bool> next = state->waiters.front();
        state->waiters.pop_front();
        if (next.isComplete())
            continue; // it stopped waiting
        next.complete(true);
        return;
    }
    ++state->free;
}

FairSemaphore::FairSemaphore(int permits)
    : m_state(std::make_shared<Permit::State>()) {
    m_state->free = permits;
}

Task<std::optional<FairSemaphore::Permit>> FairSemaphore::acquire(StopToken stop) {
    const auto state = m_state;
    if (stop.stop_requested())
        co_return std::nullopt;
    if (state->free > 0) {
        --state->free;
        co_return Permit(state);
    }
    Completion<bool> turn;
    state->waiters.push_back(turn);
    const std::stop_callback onStop(stop, [turn]() mutable { turn.complete(false); });
    if (co_await turn)
        co_return Permit(state);
    co_return std::nullopt;
}

bool FairSemaphore::isExhausted() const {
    return m_state->free == 0;
}

int FairSemaphore::waiting() const {
    return static_cast<int>(std::ranges::count_if(
        m_state->waiters, [](const Completion<bool> &waiter) { return !waiter.isComplete(); }));
}

} // namespace larkspur
