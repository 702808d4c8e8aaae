#include "cli/InterruptWatch.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace larkspur {

namespace {

int wakeUp[2] = {-1, -1}; // written by the signal handler, which can reach nothing else

extern "C" void onSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp[1], &byte, 1);
}

} // namespace

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt) {
    if (::pipe(wakeUp) != 0)
        return; // Ctrl-C then ends the program as it ends any other
    for (const int end : wakeUp)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    m_notifier = std::make_unique<QSocketNotifier>(wakeUp[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [onInterrupt = std::move(onInterrupt)] {
        char byte = 0;
        [[maybe_unused]] const auto count = ::read(wakeUp[0], &byte, 1);
        onInterrupt();
    });
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
}

InterruptWatch::~InterruptWatch() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    m_notifier.reset();
    for (int &end : wakeUp) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}

} // namespace larkspur
