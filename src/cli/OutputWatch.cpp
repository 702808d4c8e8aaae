#include "cli/OutputWatch.h"

#include <QAbstractEventDispatcher>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace larkspur::cli {

namespace {

/// A reader who has seen enough, like `head`, needs no word about it.
bool hasReader(int file) {
    struct stat status{};
    return ::fstat(file, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

void discardOutput() {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere >= 0) {
        ::dup2(nowhere, STDOUT_FILENO);
        ::close(nowhere);
    }
}

} // namespace

OutputWatch::OutputWatch(std::function<void()> onFailure)
    : m_onFailure(std::move(onFailure)) {
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &OutputWatch::hasFailed);
}

bool OutputWatch::hasFailed() {
    if (m_hasFailed || std::ferror(stdout) == 0)
        return m_hasFailed;
    m_hasFailed = true;
    if (!hasReader(STDOUT_FILENO))
        std::fputs("larkspur: The output cannot be written.\n", stderr);
    discardOutput();
    m_onFailure();
    return true;
}

} // namespace larkspur::cli
