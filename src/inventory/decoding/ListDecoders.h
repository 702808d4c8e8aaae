#pragma once

#include "inventory/decoding/WireRecords.h"
#include "inventory/records/BrewServiceInfo.h"
#include "inventory/records/TapInfo.h"

#include <QSet>

namespace larkspur {

/// `brew outdated`, JSON version 2.
Decoded<OutdatedResponse> decodeOutdated(const QByteArray &bytes);

/// `brew services list`.
Decoded<LossyArray<BrewServiceInfo>> decodeServices(const QByteArray &bytes);

/// `brew tap-info`. Counts that Homebrew does not send are the lengths of the lists.
Decoded<LossyArray<TapInfo>> decodeTaps(const QByteArray &bytes);

/// What `brew trust` lists, lower-cased as Homebrew prints it: tap names, or the remotes of taps with their
/// own.
struct TrustState {
    QSet<QString> taps;
    QSet<QString> formulae;
    QSet<QString> casks;
};
Decoded<TrustState> decodeTrust(const QByteArray &bytes);

} // namespace larkspur
