#pragma once

#include "core/errors/BrewError.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace larkspur::cli {

/// Standard output and standard error, as a person or a script reads them.
class Terminal {
  public:
    Terminal();

    bool isInteractive() const { return m_isInteractive; }
    int width() const;

    void line(const QString &text) const;
    void raw(const QString &text) const;
    void error(const QString &text) const;
    /// Message and suggestion of a failure.
    void error(const BrewError &failure) const;
    void json(const QJsonObject &object) const;
    void json(const QJsonArray &array) const;

    /// Rows in aligned columns; the last column is cut to the width of an interactive terminal.
    void table(const QList<QStringList> &rows) const;

  private:
    bool m_isInteractive;
};

} // namespace larkspur::cli
