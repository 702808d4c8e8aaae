#pragma once

#include "inventory/decoding/JsonReader.h"
#include "inventory/decoding/WireRecords.h"

namespace larkspur {

/// Takes the application names and the hints at bundle identifiers from a cask's list of artifacts. Entries
/// of any other kind and shape are passed over.
void readCaskArtifacts(json::Value artifacts, const json::Path &path, CaskJSON &cask);

} // namespace larkspur
