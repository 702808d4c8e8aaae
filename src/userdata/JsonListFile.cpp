#include "userdata/JsonListFile.h"

#include "core/files/AtomicFile.h"
#include "core/log/Logger.h"

#include <QFile>
#include <QJsonDocument>

namespace larkspur {

JsonListFile::JsonListFile(QString path, Logger &logger)
    : m_path(std::move(path))
    , m_logger(logger) {}

std::optional<QJsonArray> JsonListFile::read() const {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    return document.isArray() ? std::optional(document.array()) : std::nullopt;
}

bool JsonListFile::write(const QJsonArray &list) const {
    const auto written = writeFileAtomically(m_path, QJsonDocument(list).toJson());
    if (!written)
        m_logger.error(QStringLiteral("[UserData] ") + written.error());
    return written.has_value();
}

void JsonListFile::setAside() const {
    const QString aside = m_path + QStringLiteral(".unreadable");
    if (!QFile::exists(m_path) || QFile::exists(aside))
        return; // the oldest is the one that may hold what was lost
    if (QFile::rename(m_path, aside))
        m_logger.warn(QStringLiteral("[UserData] %1 could not be read; it is kept as %2").arg(m_path, aside));
}

} // namespace larkspur
