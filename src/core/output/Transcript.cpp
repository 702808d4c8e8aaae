#include "core/output/Transcript.h"

namespace larkspur {

namespace {

qsizetype cost(const QString &line) {
    return line.size() + 16; // the string's own bookkeeping, so that a million empty lines are bounded too
}

} // namespace

Transcript::Transcript(qsizetype limit)
    : m_limit(limit) {}

void Transcript::apply(const OutputChange &change) {
    for (int i = 0; i < change.replaces && !m_tail.empty(); ++i) {
        m_tailSize -= cost(m_tail.back());
        m_tail.pop_back();
    }
    for (const QString &line : change.lines) {
        m_tail.push_back(line);
        m_tailSize += cost(line);
    }
    trim();
}

void Transcript::trim() {
    const qsizetype headLimit = m_limit / 4;
    constexpr std::size_t redrawable = 64; // lines that a redraw may still take back never move to the head
    while (m_headSize + m_tailSize > m_limit && m_tail.size() > redrawable) {
        QString oldest = std::move(m_tail.front());
        m_tail.pop_front();
        m_tailSize -= cost(oldest);
        if (m_leftOut == 0 && m_headSize < headLimit) {
            m_headSize += cost(oldest);
            m_head.append(std::move(oldest));
        } else {
            ++m_leftOut;
        }
    }
}

QStringList Transcript::lines() const {
    QStringList all = m_head;
    all.reserve(lineCount());
    if (m_leftOut > 0)
        all.append(QStringLiteral("==> … %1 lines are left out here").arg(m_leftOut));
    for (const QString &line : m_tail)
        all.append(line);
    return all;
}

qsizetype Transcript::lineCount() const {
    return m_head.size() + (m_leftOut > 0 ? 1 : 0) + static_cast<qsizetype>(m_tail.size());
}

} // namespace larkspur
