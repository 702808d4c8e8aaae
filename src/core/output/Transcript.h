#pragma once

#include "core/output/OutputChange.h"

#include <QStringList>

#include <deque>

namespace larkspur {

/// The kept lines of an output, bounded: past the limit the oldest lines after the head are left out and
/// counted, so that a chatty child cannot fill the memory while the beginning and the end stay readable.
class Transcript {
  public:
    static constexpr qsizetype defaultLimit = 8 * 1024 * 1024; ///< characters

    explicit Transcript(qsizetype limit = defaultLimit);

    void apply(const OutputChange &change);

    /// Every kept line in order; where lines were left out, one line says how many.
    QStringList lines() const;
    QString text() const { return lines().join(QLatin1Char('\n')); }

    /// Number of lines that `lines()` holds.
    qsizetype lineCount() const;
    qint64 leftOut() const { return m_leftOut; }

  private:
    void trim();

    qsizetype m_limit;
    QStringList m_head;
    std::deque<QString> m_tail;
    qsizetype m_headSize = 0;
    qsizetype m_tailSize = 0;
    qint64 m_leftOut = 0;
};

} // namespace larkspur
