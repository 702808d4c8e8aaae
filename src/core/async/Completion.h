#pragma once

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace larkspur {

/// A value that arrives once, from a callback, for at most one waiting coroutine. Copies share the same
/// arrival. Main thread only. A completion that nobody completes never resumes its waiter: whoever takes one
/// must settle it.
template <typename T>
class Completion {
  public:
    /// Delivers the value and resumes the waiter. Only the first call counts.
    void complete(T value) {
        const auto state = m_state;
        if (state->value)
            return;
        state->value.emplace(std::move(value));
        if (state->waiter)
            std::exchange(state->waiter, {}).resume();
    }

    bool isComplete() const { return m_state->value.has_value(); }

    bool await_ready() const { return isComplete(); }
    void await_suspend(std::coroutine_handle<> waiter) { m_state->waiter = waiter; }
    T await_resume() { return std::move(*m_state->value); }

  private:
    struct State {
        std::optional<T> value;
        std::coroutine_handle<> waiter;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace larkspur
