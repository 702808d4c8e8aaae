#include "core/log/Logger.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace larkspur {

namespace {

QString levelName(LogLevel level) {
    switch (level) {
    case LogLevel::Info:
        return QStringLiteral("INFO");
    case LogLevel::Warn:
        return QStringLiteral("WARN");
    case LogLevel::Error:
        return QStringLiteral("ERROR");
    }
    return {};
}

/// An entry is one line whatever a child printed: line ends inside it would look like further entries.
QString onOneLine(QString message) {
    message.replace(QLatin1Char('\n'), QLatin1Char(' '));
    message.replace(QLatin1Char('\r'), QLatin1Char(' '));
    return message;
}

} // namespace

Logger::Logger(QString folder, Clock clock)
    : m_folder(std::move(folder))
    , m_clock(std::move(clock)) {}

QString Logger::filePath() const {
    return m_folder + QStringLiteral("/larkspur.log");
}

QString Logger::previousFilePath() const {
    return filePath() + QStringLiteral(".1");
}

void Logger::log(LogLevel level, const QString &message) {
    const QString line =
        QStringLiteral("[%1] [%2] ").arg(m_clock().toUTC().toString(Qt::ISODate), levelName(level)) +
        onOneLine(message) + QLatin1Char('\n');
    const QMutexLocker locker(&m_mutex);
    rotateIfFull();
    QFile file(filePath());
    const auto mode = QIODevice::WriteOnly | QIODevice::Append;
    if (!file.open(mode) && !(QDir().mkpath(m_folder) && file.open(mode)))
        return;
    file.write(line.toUtf8());
}

void Logger::rotateIfFull() {
    const QFileInfo current(filePath());
    if (!current.exists() || current.size() < maxBytes)
        return;
    QFile::remove(previousFilePath());
    QFile::rename(filePath(), previousFilePath());
}

} // namespace larkspur
