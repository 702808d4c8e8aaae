#pragma once

#include <QString>
#include <QStringList>

namespace sample {

/// What is being fetched, as Homebrew's download queue shows it.
struct Download {
    QString label; ///< such as "Formula heron (8.11.1)"
    int kilobytes = 0;
};

/// Prints as Homebrew prints: headers to standard output, warnings and errors to standard error, colours and
/// redraws only on a terminal; and takes the time that a real machine would take, unless HOMEBREW_SAMPLE_PACE
/// is "off".
class Screen {
  public:
    Screen();

    void line(const QString &text) const;
    void header(const QString &text) const;
    void warning(const QString &text) const;
    void error(const QString &text) const;
    void note(const QString &text) const; ///< a plain line on standard error

    /// "==> Fetching downloads for: …" and the rows of the queue.
    void fetch(const QStringList &names, const QList<Download> &downloads) const;

    /// Waits, if the pace is on.
    void pause(int milliseconds) const;
    bool isPaced() const { return m_isPaced; }

  private:
    QString coloured(const char *colour, const QString &text) const;
    void drawQueue(const QList<Download> &downloads) const;

    bool m_isTerminal;
    bool m_hasColours;
    bool m_isPaced;
};

/// "a, b and c".
QString sentence(const QStringList &names);

} // namespace sample
