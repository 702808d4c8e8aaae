#include "operations/packages/PasswordTrigger.h"

#include "core/authorization/PasswordFailure.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

std::optional<PasswordTrigger> passwordTrigger(const QStringList &output) {
    static const QRegularExpression heading(
        QStringLiteral("^==> (?:Upgrading|Installing|Reinstalling|Uninstalling|Pouring)"
                       "(?: Cask| Formula)? ([^\\s:]+)\\s*$"));
    const auto failure = std::ranges::find_if(output, &showsPasswordFailure);
    if (failure == output.end())
        return std::nullopt;
    PasswordTrigger trigger{*failure, {}};
    for (auto line = failure; line != output.begin() && trigger.package.isEmpty();)
        if (const auto match = heading.match(*--line); match.hasMatch())
            trigger.package = match.captured(1).section(QStringLiteral("--"), 0, 0); // of a bottle's file
    return trigger;
}

} // namespace larkspur
