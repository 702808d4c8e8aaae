#include "inventory/refresh/XcodeSetup.h"

#include "core/errors/AppError.h"

#include <QStringList>

#include <algorithm>

namespace larkspur {

bool needsXcodeSetup(const QString &text) {
    return text.contains(QLatin1String("invalid active developer path"), Qt::CaseInsensitive) ||
           text.contains(QLatin1String("command line tools"), Qt::CaseInsensitive) ||
           mentionsXcodeLicense(text);
}

bool failsForXcode(const QString &text) {
    const QStringList lines = text.split(QLatin1Char('\n'));
    return std::ranges::any_of(lines, [](const QString &line) {
        return line.startsWith(QLatin1String("Error:")) && needsXcodeSetup(line);
    });
}

} // namespace larkspur
