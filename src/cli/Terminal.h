#pragma once

#include "core/errors/BrewError.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace larkspur::cli {

/// Standard output and standard error, as a person or a script reads them. Nothing that is printed can make
/// the person's terminal do anything: whatever it is and wherever it comes from, it goes through
/// safeForTerminal.
class Terminal {
  public:
    Terminal();

    bool isInteractive() const { return m_isInteractive; }
    int width() const;

    void line(const QString &text) const;
    /// Text that brings its own line feeds.
    void text(const QString &text) const;
    void error(const QString &text) const;
    /// Message and suggestion of a failure.
    void error(const BrewError &failure) const;
    void json(const QJsonObject &object) const;
    void json(const QJsonArray &array) const;

    /// Rows in aligned columns, each row on one line; the last column is cut to the width of an interactive
    /// terminal.
    void table(const QList<QStringList> &rows) const;

    /// The only way past the filter: a control sequence of the program's own, such as one that takes lines
    /// back. Nothing from outside is ever part of it.
    void unfilteredSequence(const QString &sequence) const;

  private:
    bool m_isInteractive;
};

} // namespace larkspur::cli
