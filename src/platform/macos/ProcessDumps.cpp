#include "platform/macos/ProcessDumps.h"

#include <sys/resource.h>

namespace larkspur {

void ProcessDumps::forbidDumps() {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
}

} // namespace larkspur
