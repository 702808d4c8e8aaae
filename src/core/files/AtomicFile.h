#pragma once

#include <QByteArray>
#include <QString>

#include <expected>

namespace larkspur {

/// Replaces a file as a whole: after a failure or a crash at any step the old content stands. Makes missing
/// parent folders. The error is one line of text.
std::expected<void, QString> writeFileAtomically(const QString &path, const QByteArray &bytes);

} // namespace larkspur
