#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace larkspur {

/// Turns SIGINT and SIGTERM into a call on the main thread, as long as it lives. One at a time.
class InterruptWatch {
  public:
    explicit InterruptWatch(std::function<void()> onInterrupt);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch &) = delete;
    InterruptWatch &operator=(const InterruptWatch &) = delete;

  private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace larkspur
