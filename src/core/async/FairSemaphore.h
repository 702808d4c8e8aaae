#pragma once

#include "core/async/Completion.h"
#include "core/async/Task.h"

#include <deque>
#include <memory>
#include <optional>

namespace larkspur {

/// A number of permits, handed out strictly in the order of asking. A permit that is given back passes
/// straight to the oldest waiter, so nobody who arrives in between can jump the queue. Main thread only; no
/// busy waiting.
class FairSemaphore {
  public:
    explicit FairSemaphore(int permits);

    /// Holds one permit and gives it back when destroyed. May outlive the semaphore.
    class Permit {
      public:
        Permit() = default;
        Permit(Permit &&other) noexcept;
        Permit &operator=(Permit &&other) noexcept;
        ~Permit() { release(); }

        void release();
        bool isHeld() const { return m_state != nullptr; }

      private:
        friend class FairSemaphore;
        struct State;
        explicit Permit(std::shared_ptr<State> state);
        std::shared_ptr<State> m_state;
    };

    /// Waits for a permit; nothing if stop was requested before one was free.
    Task<std::optional<Permit>> acquire(StopToken stop);

    bool isExhausted() const;
    int waiting() const;

  private:
    std::shared_ptr<Permit::State> m_state;
};

} // namespace larkspur
