#include "platform/linux/ProcessDumps.h"

#include <sys/prctl.h>

namespace larkspur {

void ProcessDumps::forbidDumps() {
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

} // namespace larkspur
