#include "inventory/refresh/HiddenTaps.h"

#include <algorithm>

namespace larkspur {

namespace {

bool isTrusted(const TapInfo &tap, const TrustState &trust) {
    if (tap.isOfficial)
        return true;
    if (tap.isTrusted)
        return *tap.isTrusted;
    return trust.taps.contains(tap.name.toLower()) ||
           (tap.remote && trust.taps.contains(tap.remote->toLower()));
}

/// A package can be trusted by itself, as tap/name or remote/name.
bool isTrusted(const QString &fullName, const TapInfo &tap, const TrustState &trust) {
    const QString name = fullName.section(QLatin1Char('/'), -1).toLower();
    QStringList entries{tap.name.toLower() + QLatin1Char('/') + name};
    if (tap.remote)
        entries.append(tap.remote->toLower() + QLatin1Char('/') + name);
    return std::ranges::any_of(entries, [&trust](const QString &entry) {
        return trust.formulae.contains(entry) || trust.casks.contains(entry);
    });
}

} // namespace

QSet<QString> trustedTapNames(const QList<TapInfo> &taps, const TrustState &trust) {
    QSet<QString> names;
    for (const TapInfo &tap : taps)
        if (isTrusted(tap, trust))
            names.insert(tap.name);
    return names;
}

QList<HiddenTap> hiddenTaps(const QList<TapInfo> &taps, const TrustState &trust,
                            const QStringList &installedFullNames) {
    QList<HiddenTap> hidden;
    for (const TapInfo &tap : taps) {
        if (isTrusted(tap, trust))
            continue;
        HiddenTap entry{tap.name, {}};
        for (const QString &name : installedFullNames)
            if (name.startsWith(tap.name + QLatin1Char('/'), Qt::CaseInsensitive) &&
                !isTrusted(name, tap, trust))
                entry.packages.append(name);
        hidden.append(entry);
    }
    return hidden;
}

QList<HiddenTap> tapsToReport(const QList<HiddenTap> &hidden, const QStringList &dismissed) {
    const bool isNewOne =
        std::ranges::any_of(hidden, [&](const HiddenTap &tap) { return !dismissed.contains(tap.name); });
    return isNewOne ? hidden : QList<HiddenTap>();
}

} // namespace larkspur
