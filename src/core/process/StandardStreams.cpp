#include "core/process/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace larkspur {

void fillMissingStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0) // the lowest free number is this one
            [[maybe_unused]]
            const int file = ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

} // namespace larkspur
