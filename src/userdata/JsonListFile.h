#pragma once

#include <QJsonArray>
#include <QString>

#include <expected>

namespace larkspur {

class Logger;

/// A list in a JSON file of its own.
class JsonListFile {
  public:
    JsonListFile(QString path, Logger &logger);

    /// An empty list for a missing file. The error, for one that cannot be read or holds no list, is one line
    /// of text.
    std::expected<QJsonArray, QString> read() const;

    /// Replaces the file as a whole. A failure is logged; false then.
    bool write(const QJsonArray &list) const;

    /// Before the first writing over contents that nobody understood: keeps them beside the file. False if
    /// that failed; then nothing may be written over them.
    bool setAside() const;
    /// The file in which such contents are kept; empty if there is none.
    QString keptAside() const;
    const QString &path() const { return m_path; }
    void warn(const QString &text) const;

  private:
    QString asidePath() const { return m_path + QStringLiteral(".unreadable"); }

    QString m_path;
    Logger &m_logger;
};

} // namespace larkspur
