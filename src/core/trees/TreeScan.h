#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <expected>

namespace larkspur {

/// One file, folder or link of a tree.
struct TreeEntry {
    enum class Kind : char { File = 'f', Folder = 'd', Link = 'l' };
    Kind kind = Kind::File;
    unsigned mode = 0;   ///< permission bits; 0 for a link
    qint64 size = 0;     ///< of a file, in bytes
    QByteArray path;     ///< relative, as the file system spells it
    QByteArray contents; ///< of a file: a hash, empty if it was not read; of a link: where it points

    bool operator==(const TreeEntry &) const = default;
};

/// Everything in a folder, sorted by path. Sockets, pipes and devices are passed over: nobody's package
/// depends on one that was left behind.
struct TreeScan {
    QList<TreeEntry> entries;
    qint64 bytesOnDisk = 0; ///< a file with several names counts once

    enum class Depth { Names, Contents };
    /// Blocking. The error is one line of text.
    static std::expected<TreeScan, QString> of(const QString &folder, Depth depth);

    /// The same names, kinds, sizes, modes and link targets; contents where both have read them.
    bool matches(const TreeScan &other) const;

    QByteArray toText() const;
    static std::expected<TreeScan, QString> fromText(const QByteArray &text);
};

} // namespace larkspur
