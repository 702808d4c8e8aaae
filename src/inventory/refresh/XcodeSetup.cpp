#include "inventory/refresh/XcodeSetup.h"

#include "core/errors/AppError.h"

namespace larkspur {

bool needsXcodeSetup(const QString &text) {
    return text.contains(QLatin1String("invalid active developer path"), Qt::CaseInsensitive) ||
           text.contains(QLatin1String("command line tools"), Qt::CaseInsensitive) ||
           mentionsXcodeLicense(text);
}

} // namespace larkspur
