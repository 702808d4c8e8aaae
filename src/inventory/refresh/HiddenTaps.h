#pragma once

#include "inventory/decoding/ListDecoders.h"
#include "inventory/records/TapInfo.h"

#include <QSet>

namespace larkspur {

/// Names of the taps that Homebrew trusts. Official taps always are; a tap with a remote of its own is listed
/// by it.
QSet<QString> trustedTapNames(const QList<TapInfo> &taps, const TrustState &trust);

/// The installed taps that are not trusted, each with its installed packages that Homebrew therefore hides.
QList<HiddenTap> hiddenTaps(const QList<TapInfo> &taps, const TrustState &trust,
                            const QStringList &installedFullNames);

/// Those of them to show: none once all were dismissed, all again when a new one appears.
QList<HiddenTap> tapsToReport(const QList<HiddenTap> &hidden, const QStringList &dismissed);

} // namespace larkspur
