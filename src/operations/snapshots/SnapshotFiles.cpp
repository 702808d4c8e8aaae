#include "operations/snapshots/SnapshotFiles.h"

#include "core/files/AtomicFile.h"
#include "core/files/FolderNames.h"
#include "core/files/WholeFile.h"

#include <QFile>
#include <QFileInfo>

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
    const auto names = namesIn(m_folder);
    if (!names)
        contents.failure = names.error();
    for (const QString &name : names.value_or(QStringList())) {
        const QFileInfo info(m_folder + QLatin1Char('/') + name);
        if (!name.endsWith(QLatin1String(".json"), Qt::CaseInsensitive) || info.isDir())
            continue;
        const auto text = readWholeFile(info.filePath(), largest);
        const auto snapshot = text ? snapshotFromText(*text) : std::unexpected(text.error().reason);
        // A file under another name could not be deleted by its id, or would hide the one it claims to be.
        if (snapshot && nameOf(snapshot->id) == info.completeBaseName().toUpper())
            contents.snapshots.append(*snapshot);
        else
            contents.unreadable.append(QStringLiteral("%1 (%2)").arg(
                info.fileName(), snapshot ? QStringLiteral("its name is another's") : snapshot.error()));
    }
    std::ranges::sort(contents.snapshots, std::ranges::greater(),
                      [](const Snapshot &snapshot) { return std::pair(snapshot.date, snapshot.id); });
    return contents;
}

std::expected<void, QString> SnapshotFiles::write(const Snapshot &snapshot) const {
    const QByteArray text = snapshotText(snapshot);
    // One that could never be read again would be none.
    if (const auto read = snapshotFromText(text); !read)
        return std::unexpected(read.error());
    if (text.size() > largest)
        return std::unexpected(QStringLiteral("it would be larger than a restore point can be"));
    return writeFileAtomically(path(snapshot.id), text);
}

bool SnapshotFiles::remove(const QUuid &id) const {
    // Written by another program, the name may be in small letters.
    const QString other = m_folder + QLatin1Char('/') + nameOf(id).toLower() + QStringLiteral(".json");
    return QFile::remove(path(id)) || QFile::remove(other) || !QFile::exists(path(id));
}

} // namespace larkspur
