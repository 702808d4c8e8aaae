#include "core/process/Descendants.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace larkspur {

namespace {

void closeEnd(int &end) {
    if (end >= 0)
        ::close(std::exchange(end, -1));
}

} // namespace

Descendants::~Descendants() {
    closeEnd(m_ours);
    closeEnd(m_theirs);
}

void Descendants::prepare() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return;
    for (const int end : ends)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    m_ours = ends[0];
    m_theirs = ends[1];
}

void Descendants::enterInChild() const {
    if (m_theirs >= 0)
        ::fcntl(m_theirs, F_SETFD, 0);
}

void Descendants::childStarted() {
    closeEnd(m_theirs);
}

bool Descendants::areLeft() const {
    if (m_ours < 0)
        return false;
    pollfd end{.fd = m_ours, .events = POLLIN, .revents = 0};
    ::poll(&end, 1, 0);
    return !(end.revents & POLLHUP); // the last of them has closed it
}

} // namespace larkspur
