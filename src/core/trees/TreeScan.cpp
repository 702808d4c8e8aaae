#include "core/trees/TreeScan.h"

#include "core/trees/TreeReader.h"

#include <QFile>

#include <algorithm>

namespace larkspur {

namespace {

/// Entries of the manifest are separated by line feeds and blanks; a path may hold both.
QByteArray quoted(const QByteArray &text) {
    const bool isPlain = std::ranges::all_of(text, [](char c) { return c > ' ' && c < 127 && c != '%'; });
    if (isPlain)
        return text; // nearly every one
    return text.toPercentEncoding("/.-_+@", {}, '%');
}

} // namespace

std::expected<TreeScan, QString> TreeScan::of(const QString &folder, Depth depth) {
    return TreeReader(QFile::encodeName(folder), depth).read();
}

bool TreeScan::matches(const TreeScan &other) const {
    return std::ranges::equal(entries, other.entries, [](const TreeEntry &left, const TreeEntry &right) {
        const bool contentsMatch =
            left.contents.isEmpty() || right.contents.isEmpty() || left.contents == right.contents;
        return left.kind == right.kind && left.mode == right.mode && left.size == right.size &&
               left.path == right.path && contentsMatch;
    });
}

QByteArray TreeScan::toText() const {
    constexpr qsizetype usualLine = 100;
    QByteArray text;
    text.reserve(entries.size() * usualLine);
    for (const TreeEntry &entry : entries) {
        text.append(static_cast<char>(entry.kind)).append(' ');
        text.append(QByteArray::number(entry.mode, 8)).append(' ');
        text.append(QByteArray::number(entry.size)).append(' ');
        text.append(quoted(entry.path)).append(' ');
        text.append(quoted(entry.contents)).append('\n');
    }
    return text.append("end ").append(QByteArray::number(bytesOnDisk)).append('\n');
}

std::expected<TreeScan, QString> TreeScan::fromText(const QByteArray &text) {
    TreeScan scan;
    bool isWhole = false;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2 && words[0] == "end") {
            scan.bytesOnDisk = words[1].toLongLong();
            isWhole = true;
        } else if (words.size() == 5 && words[0].size() == 1) {
            scan.entries.append({.kind = static_cast<TreeEntry::Kind>(words[0][0]),
                                 .mode = words[1].toUInt(nullptr, 8),
                                 .size = words[2].toLongLong(),
                                 .path = QByteArray::fromPercentEncoding(words[3]),
                                 .contents = QByteArray::fromPercentEncoding(words[4])});
        } else if (!line.isEmpty()) {
            return std::unexpected(QStringLiteral("the list of files is damaged"));
        }
    }
    if (!isWhole)
        return std::unexpected(QStringLiteral("the list of files is cut"));
    return scan;
}

} // namespace larkspur
