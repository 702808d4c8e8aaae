#pragma once

#include <QDateTime>
#include <QMutex>
#include <QString>

#include <functional>

namespace larkspur {

enum class LogLevel { Info, Warn, Error };

/// The activity log: one line per entry, rotated to a single older generation. Callable from any thread. A
/// log that cannot be written is never reported to the caller: logging must not disturb what it logs.
class Logger {
  public:
    /// Size in bytes at which the file is rotated before the next line.
    static constexpr qint64 maxBytes = 2 * 1024 * 1024;

    using Clock = std::function<QDateTime()>;

    /// Logs to `folder`/larkspur.log; the folder is made on the first line.
    explicit Logger(QString folder, Clock clock = &QDateTime::currentDateTimeUtc);

    void log(LogLevel level, const QString &message);
    void info(const QString &message) { log(LogLevel::Info, message); }
    void warn(const QString &message) { log(LogLevel::Warn, message); }
    void error(const QString &message) { log(LogLevel::Error, message); }

    QString filePath() const;
    QString previousFilePath() const;

  private:
    void rotateIfFull();

    QString m_folder;
    Clock m_clock;
    QMutex m_mutex;
};

} // namespace larkspur
