#pragma once

#include <QString>
#include <QStringList>

#include <expected>

namespace larkspur {

/// The names of all that is in a folder and not hidden, links that lead nowhere included. A folder that is
/// not there is empty; whatever else keeps it from being read is the error, one line of text: a link in its
/// place that leads nowhere, for example to a disk that is away, and a folder that may not be read. Blocking.
std::expected<QStringList, QString> namesIn(const QString &folder);

} // namespace larkspur
