#include "inventory/records/Caveats.h"

namespace larkspur {

QString caveatsText(QString caveats, const QString &brewPrefix) {
    if (!brewPrefix.isEmpty()) {
        caveats.replace(QLatin1String("$HOMEBREW_CELLAR"), brewPrefix + QStringLiteral("/Cellar"));
        caveats.replace(QLatin1String("$HOMEBREW_PREFIX"), brewPrefix);
    }
    return caveats.trimmed();
}

} // namespace larkspur
