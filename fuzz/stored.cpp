#include "core/trees/TreeScan.h"
#include "inventory/records/RecordJson.h"
#include "operations/kegs/KegEntry.h"
#include "operations/kegs/RollbackNote.h"
#include "operations/snapshots/Snapshot.h"
#include "userdata/HistoryEntry.h"
#include "userdata/Snooze.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// The program's own files, as somebody or something may have left them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QList<larkspur::KegEntry> entries = larkspur::kegIndexFromText(text).entries;
    if (larkspur::kegIndexFromText(larkspur::kegIndexText(entries)).entries.size() != entries.size())
        std::abort();
    if (auto snapshot = larkspur::snapshotFromText(text)) {
        snapshot->refused.clear(); // is not written
        if (larkspur::snapshotFromText(larkspur::snapshotText(*snapshot)) != snapshot)
            std::abort();
    }
    if (const auto scan = larkspur::TreeScan::fromText(text))
        if (larkspur::TreeScan::fromText(scan->toText())->entries.size() != scan->entries.size())
            std::abort();
    const QJsonDocument document = QJsonDocument::fromJson(text);
    const QString prefix = QStringLiteral("/p");
    if (const auto note = larkspur::RollbackNote::fromJson(document.object(), prefix))
        for (const QString &path : {note->rack(), note->keg(), note->staged(), note->aside()})
            if (!QDir::cleanPath(path).startsWith(prefix + QLatin1Char('/')) || QDir::cleanPath(path) != path)
                std::abort();
    for (const QJsonValue &element : document.array()) {
        const QJsonObject json = element.toObject();
        if (const auto entry = larkspur::HistoryEntry::fromJson(json))
            if (larkspur::HistoryEntry::fromJson(entry->toJson()) != entry)
                std::abort();
        if (const auto snoozed = larkspur::SnoozedPackage::fromJson(json))
            if (larkspur::SnoozedPackage::fromJson(snoozed->toJson()) != snoozed)
                std::abort();
        (void)larkspur::recordFromJson<larkspur::Formula>(json);
        (void)larkspur::recordFromJson<larkspur::Cask>(json);
        (void)larkspur::recordFromJson<larkspur::OutdatedPackage>(json);
    }
    return 0;
}
