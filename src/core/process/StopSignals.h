#pragma once

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <functional>
#include <memory>

namespace larkspur {

/// Turns the signals that ask a program to end (SIGHUP, SIGINT, SIGTERM) into a call on the main thread, as
/// long as it lives. One at a time. A signal that the program was started to ignore, with nohup for example,
/// stays ignored. SIGPIPE is ignored from then on: whoever writes sees the failure.
class StopSignals {
  public:
    explicit StopSignals(std::function<void()> onSignal);
    ~StopSignals();
    StopSignals(const StopSignals &) = delete;
    StopSignals &operator=(const StopSignals &) = delete;

  private:
    static constexpr std::array watched{SIGHUP, SIGINT, SIGTERM};

    std::unique_ptr<QSocketNotifier> m_notifier;
    std::array<struct sigaction, watched.size()> m_before{};
};

} // namespace larkspur
