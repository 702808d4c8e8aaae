#include "core/authorization/PasswordFailure.h"

#include "core/output/PhraseSet.h"

namespace larkspur {

bool showsPasswordFailure(const QString &output) {
    // The fifth is the beginning of the command line that Homebrew echoes when its sudo fails.
    static const PhraseSet phrases{"incorrect password attempt", "sorry, try again", "a password is required",
                                   "a terminal is required",     "/usr/bin/sudo -a", "broken pipe"};
    return phrases.in(output) != 0;
}

} // namespace larkspur
