#include "core/trees/TreeScan.h"
#include "operations/kegs/KegEntry.h"
#include "operations/snapshots/Snapshot.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// The program's own files, as somebody or something may have left them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QList<larkspur::KegEntry> entries = larkspur::kegIndexFromText(text);
    if (larkspur::kegIndexFromText(larkspur::kegIndexText(entries)).size() != entries.size())
        std::abort();
    if (const auto snapshot = larkspur::snapshotFromText(text))
        if (larkspur::snapshotFromText(larkspur::snapshotText(*snapshot)) != snapshot)
            std::abort();
    if (const auto scan = larkspur::TreeScan::fromText(text))
        if (larkspur::TreeScan::fromText(scan->toText())->entries.size() != scan->entries.size())
            std::abort();
    return 0;
}
