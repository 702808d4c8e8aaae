#include "operations/package/MovedAside.h"

#include "core/files/AtomicFile.h"
#include "core/log/Logger.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace larkspur {

namespace {

/// Beside the application, so that moving it is a renaming.
QString asidePath(const QString &application) {
    const QFileInfo info(application);
    return info.path() + QStringLiteral("/.larkspur-aside-") + info.fileName();
}

/// Returns one application to its place. What a failed reinstallation has left there goes to the trash.
bool returnToPlace(const QString &application, Logger &logger) {
    const QString aside = asidePath(application);
    if (!QFileInfo::exists(aside))
        return false;
    if (QFileInfo::exists(application) && !QFile::moveToTrash(application)) {
        logger.error(QStringLiteral("%1 is in the way; the application from before is kept at %2")
                         .arg(application, aside));
        return false;
    }
    if (QFile::rename(aside, application))
        return true;
    logger.error(QStringLiteral("%1 could not be put back; it is kept at %2").arg(application, aside));
    return false;
}

} // namespace

MovedAside::MovedAside(const QStringList &applications, QString noteFile, Logger &logger)
    : m_noteFile(std::move(noteFile))
    , m_logger(&logger) {
    QStringList present;
    for (const QString &application : applications)
        if (QFileInfo(application).isDir() && !QFileInfo::exists(asidePath(application)))
            present.append(application);
    // Noted first: an application that is moved without a note would be lost to a crash.
    if (present.isEmpty() ||
        !writeFileAtomically(m_noteFile, QJsonDocument(QJsonArray::fromStringList(present)).toJson()))
        return;
    for (const QString &application : present)
        if (QFile::rename(application, asidePath(application)))
            m_applications.append(application);
    if (m_applications.isEmpty())
        QFile::remove(m_noteFile);
}

QStringList MovedAside::putBack() {
    QStringList returned;
    for (const QString &application : m_applications)
        if (returnToPlace(application, *m_logger))
            returned.append(application);
    if (!m_applications.isEmpty())
        QFile::remove(m_noteFile);
    m_applications.clear();
    return returned;
}

void MovedAside::discard() {
    for (const QString &application : m_applications)
        QDir(asidePath(application)).removeRecursively();
    if (!m_applications.isEmpty())
        QFile::remove(m_noteFile);
    m_applications.clear();
}

void MovedAside::recover(const QString &noteFile, Logger &logger) {
    QFile note(noteFile);
    if (!note.open(QIODevice::ReadOnly))
        return;
    for (const QJsonValue &entry : QJsonDocument::fromJson(note.readAll()).array()) {
        const QString application = entry.toString();
        const QString aside = asidePath(application);
        if (!QFileInfo::exists(aside))
            continue;
        if (!QFileInfo::exists(application)) {
            if (QFile::rename(aside, application))
                logger.info(QStringLiteral("[Larkspur] Put %1 back after an interrupted reinstallation")
                                .arg(application));
        } else if (QFile::moveToTrash(aside)) {
            logger.info(QStringLiteral("[Larkspur] Moved the copy of %1 from before an interrupted "
                                       "reinstallation to the trash")
                            .arg(application));
        }
    }
    note.remove();
}

} // namespace larkspur
