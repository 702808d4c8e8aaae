#include "userdata/JsonListFile.h"

#include "core/files/AtomicFile.h"
#include "core/files/WholeFile.h"
#include "core/log/Logger.h"

#include <QFile>
#include <QJsonDocument>

namespace larkspur {

JsonListFile::JsonListFile(QString path, Logger &logger)
    : m_path(std::move(path))
    , m_logger(logger) {}

std::expected<QJsonArray, QString> JsonListFile::read() const {
    constexpr qint64 largest = 64 * 1024 * 1024; // bytes
    const auto text = readWholeFile(m_path, largest);
    if (!text && text.error().isMissing)
        return QJsonArray();
    if (!text)
        return std::unexpected(text.error().reason);
    const QJsonDocument document = QJsonDocument::fromJson(*text);
    if (!document.isArray())
        return std::unexpected(QStringLiteral("%1 holds no list").arg(m_path));
    return document.array();
}

bool JsonListFile::write(const QJsonArray &list) const {
    const auto written = writeFileAtomically(m_path, QJsonDocument(list).toJson());
    if (!written)
        m_logger.error(QStringLiteral("[UserData] ") + written.error());
    return written.has_value();
}

bool JsonListFile::setAside() const {
    if (!QFile::exists(m_path) || QFile::exists(asidePath()))
        return true; // the oldest is the one that may hold what was lost
    const bool isKept = QFile::rename(m_path, asidePath());
    warn(isKept ? QStringLiteral("%1 could not be read; it is kept as %2").arg(m_path, asidePath())
                : QStringLiteral("%1 could not be read, and not be moved aside").arg(m_path));
    return isKept;
}

QString JsonListFile::keptAside() const {
    return QFile::exists(asidePath()) ? asidePath() : QString();
}

void JsonListFile::warn(const QString &text) const {
    m_logger.warn(QStringLiteral("[UserData] ") + text);
}

} // namespace larkspur
