#include "core/process/StopSignals.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace larkspur {

namespace {

// What the signal handler uses, which can reach nothing else.
int wakeUp[2] = {-1, -1};
pid_t owner = 0;

extern "C" void onStopSignal(int) {
    if (::getpid() != owner)
        return; // a child on its way to exec; the program itself got the signal too
    const int before = errno;
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp[1], &byte, 1);
    errno = before;
}

} // namespace

StopSignals::StopSignals(std::function<void()> onSignal) {
    std::signal(SIGPIPE, SIG_IGN);
    if (::pipe(wakeUp) != 0)
        return; // the signals then end the program as they end any other
    for (const int end : wakeUp) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK); // a flood of signals must not block the handler
    }
    owner = ::getpid();
    m_notifier = std::make_unique<QSocketNotifier>(wakeUp[0], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [onSignal = std::move(onSignal)] {
        std::array<char, 64> bytes; // NOLINT: filled by read
        while (::read(wakeUp[0], bytes.data(), bytes.size()) > 0) {
        }
        onSignal();
    });
    struct sigaction handler{};
    handler.sa_handler = onStopSignal;
    handler.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < watched.size(); ++i) {
        ::sigaction(watched[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN)
            ::sigaction(watched[i], &handler, nullptr);
    }
}

StopSignals::~StopSignals() {
    if (!m_notifier)
        return;
    for (std::size_t i = 0; i < watched.size(); ++i)
        ::sigaction(watched[i], &m_before[i], nullptr);
    m_notifier.reset();
    for (int &end : wakeUp)
        ::close(std::exchange(end, -1));
}

} // namespace larkspur
