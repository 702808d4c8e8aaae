#include "core/authorization/PasswordFailure.h"

#include <algorithm>
#include <array>

namespace larkspur {

bool showsPasswordFailure(const QString &output) {
    // The fifth is the command line that Homebrew echoes when its sudo fails, as it reads in small letters.
    static constexpr std::array phrases{"incorrect password attempt", "sorry, try again",
                                        "a password is required",     "a terminal is required",
                                        "/usr/bin/sudo -a",           "broken pipe"};
    const QString text = output.toLower();
    return std::ranges::any_of(phrases,
                               [&text](const char *phrase) { return text.contains(QLatin1String(phrase)); });
}

} // namespace larkspur
