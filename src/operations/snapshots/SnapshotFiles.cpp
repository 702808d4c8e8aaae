#include "operations/snapshots/SnapshotFiles.h"

#include "core/files/AtomicFile.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace larkspur {

namespace {

constexpr qint64 largest = 32 * 1024 * 1024; // bytes; a thousand times what a large machine needs

QString nameOf(const QUuid &id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

} // namespace

QString SnapshotFiles::path(const QUuid &id) const {
    return m_folder + QLatin1Char('/') + nameOf(id) + QStringLiteral(".json");
}

SnapshotFiles::Contents SnapshotFiles::load() const {
    Contents contents;
    for (const QFileInfo &info : QDir(m_folder).entryInfoList({QStringLiteral("*.json")}, QDir::Files)) {
        QFile file(info.filePath());
        const bool isSmall = info.size() <= largest && file.open(QIODevice::ReadOnly);
        const auto snapshot = isSmall ? snapshotFromText(file.readAll()) : std::nullopt;
        // A file under another name could not be deleted by its id, or would hide the one it claims to be.
        if (snapshot && nameOf(snapshot->id) == info.completeBaseName().toUpper())
            contents.snapshots.append(*snapshot);
        else
            contents.unreadable.append(info.fileName());
    }
    std::ranges::sort(contents.snapshots, std::ranges::greater(),
                      [](const Snapshot &snapshot) { return std::pair(snapshot.date, snapshot.id); });
    return contents;
}

std::expected<void, QString> SnapshotFiles::write(const Snapshot &snapshot) const {
    return writeFileAtomically(path(snapshot.id), snapshotText(snapshot));
}

bool SnapshotFiles::remove(const QUuid &id) const {
    // Written by another program, the name may be in small letters.
    const QString other = m_folder + QLatin1Char('/') + nameOf(id).toLower() + QStringLiteral(".json");
    return QFile::remove(path(id)) || QFile::remove(other) || !QFile::exists(path(id));
}

} // namespace larkspur
