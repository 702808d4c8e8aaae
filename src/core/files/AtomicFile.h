#pragma once

#include "core/files/FileCalls.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <expected>

namespace larkspur {

/// Replaces a file as a whole: after a failure, a full disk or a crash at any step the old content stands.
/// Once it returns the new content is on the disk, power cut or not, and with it the missing parent folders
/// that it makes. Writes through a link. `permissions`: of the file, where they are not to be those of the
/// old one or the usual ones. The error is one line of text. Only if it says that the file was written, but
/// its folder not synced, the new content may stand already.
std::expected<void, QString> writeFileAtomically(const QString &path, const QByteArray &bytes,
                                                 QFile::Permissions permissions = {},
                                                 const FileCalls &calls = FileCalls());

/// Removes what an interrupted `writeFileAtomically` of a program that is no more has left in a folder.
void removeUnfinishedFiles(const QString &folder);
/// Whether there is any.
bool hasUnfinishedFiles(const QString &folder);

} // namespace larkspur
