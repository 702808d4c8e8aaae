#pragma once

#include <QJsonArray>
#include <QString>

#include <optional>

namespace larkspur {

class Logger;

/// A list in a JSON file of its own.
class JsonListFile {
  public:
    JsonListFile(QString path, Logger &logger);

    /// Nothing for a missing file and for one that holds no list.
    std::optional<QJsonArray> read() const;

    /// Replaces the file as a whole. A failure is logged; false then.
    bool write(const QJsonArray &list) const;

    /// Before the first writing over contents that nobody understood: keeps them beside the file.
    void setAside() const;

  private:
    QString m_path;
    Logger &m_logger;
};

} // namespace larkspur
