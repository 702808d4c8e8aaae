#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <expected>

namespace larkspur {

/// Replaces a file as a whole: after a failure or a crash at any step the old content stands. Makes missing
/// parent folders. `permissions`: of the new file, where they are not to be the usual ones. The error is one
/// line of text.
std::expected<void, QString> writeFileAtomically(const QString &path, const QByteArray &bytes,
                                                 QFile::Permissions permissions = {});

} // namespace larkspur
