#pragma once

#include "inventory/decoding/DecodingError.h"
#include "inventory/decoding/WireRecords.h"

namespace larkspur {

/// Decodes the output of a `brew info` with JSON version 2. Broken elements are left out and described;
/// a list that is missing, or of which nothing can be read, fails.
Decoded<BrewInfoResponse> decodeBrewInfo(const QByteArray &bytes);

/// Decodes a bare array of casks, as the public catalogue is.
Decoded<LossyArray<CaskJSON>> decodeCaskCatalogue(const QByteArray &bytes);

} // namespace larkspur
