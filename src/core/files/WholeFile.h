#pragma once

#include <QByteArray>
#include <QString>

#include <expected>

namespace larkspur {

/// Why a file could not be read back.
struct ReadFailure {
    bool isMissing = false; ///< there is none; any other failure means that there is one that cannot be read
    QString reason = {};    ///< one line of text
    bool mayPass = false;   ///< it says nothing of the file, which may be whole: no permission, for example
};

/// The contents of a file that the program has written. Whoever could have changed it since: a link that
/// leads nowhere, a pipe that never ends and a file larger than `limit` bytes are failures, not traps.
std::expected<QByteArray, ReadFailure> readWholeFile(const QString &path, qint64 limit);

} // namespace larkspur
