#include "core/output/TerminalReader.h"

#include <algorithm>

namespace larkspur {

namespace {

constexpr char16_t escape = 0x1B;
constexpr char16_t bell = 0x07;
constexpr qsizetype longestParameters = 64;

int firstNumber(const QString &parameters, int fallback) {
    bool isNumber = false;
    const int number = parameters.section(QLatin1Char(';'), 0, 0).toInt(&isNumber);
    return isNumber ? number : fallback;
}

/// Sandboxed builds write a NUL to their terminal, whose echo may stand in front of the next line.
QString withoutEchoedNul(const QString &line) {
    return line.startsWith(QLatin1String("^@")) ? line.mid(2) : line;
}

} // namespace

OutputChange TerminalReader::feed(QByteArrayView bytes) {
    const QString text = m_decoder.decode(bytes);
    qsizetype i = 0;
    while (i < text.size()) {
        if (m_state != State::Text || text[i] < QLatin1Char(' ')) {
            take(text[i++].unicode());
            continue;
        }
        qsizetype end = i + 1;
        while (end < text.size() && text[end] >= QLatin1Char(' '))
            ++end;
        takeText(QStringView(text).sliced(i, end - i));
        i = end;
    }
    return publish();
}

OutputChange TerminalReader::finish() {
    if (!current().text.isEmpty() && !current().ended) {
        current().ended = true;
        current().changed = true;
    }
    return publish();
}

void TerminalReader::take(char16_t unit) {
    switch (m_state) {
    case State::Text:
        control(unit);
        return;
    case State::Escape:
        m_parameters.clear();
        if (unit == u'[')
            m_state = State::Sequence;
        else if (unit == u']' || unit == u'P' || unit == u'_' || unit == u'^')
            m_state = State::Command;
        else if (unit < 0x20 || unit > 0x2F) // intermediates such as "(" are followed by one more character
            m_state = State::Text;
        return;
    case State::Sequence:
        if (unit == escape) {
            m_state = State::Escape;
        } else if (unit >= 0x40 && unit <= 0x7E) {
            m_state = State::Text;
            sequence(unit);
        } else if (m_parameters.size() < longestParameters) {
            m_parameters.append(QChar(unit));
        }
        return;
    case State::Command:
        if (unit == bell)
            m_state = State::Text;
        else if (unit == escape)
            m_state = State::CommandEscape;
        return;
    case State::CommandEscape:
        m_state = State::Text;
        return;
    }
}

void TerminalReader::control(char16_t unit) {
    switch (unit) {
    case escape:
        m_state = State::Escape;
        break;
    case u'\n':
        lineFeed();
        break;
    case u'\r':
        m_column = 0;
        break;
    case u'\b':
        m_column = std::max<qsizetype>(0, m_column - 1);
        break;
    case u'\t':
        takeText(QStringLiteral("        ").left(8 - m_column % 8));
        break;
    default:
        break; // NUL, bell and the like show nothing
    }
}

void TerminalReader::takeText(QStringView text) {
    while (!text.isEmpty()) {
        if (m_column >= longestRow)
            lineFeed();
        Row &row = current();
        const QStringView piece = text.first(std::min(text.size(), longestRow - m_column));
        if (row.text.size() < m_column)
            row.text = row.text.leftJustified(m_column);
        row.text.replace(m_column, std::min(piece.size(), row.text.size() - m_column), piece.data(),
                         piece.size());
        row.changed = true;
        m_column += piece.size();
        text = text.sliced(piece.size());
    }
}

void TerminalReader::lineFeed() {
    if (!current().ended) {
        current().ended = true;
        current().changed = true;
    }
    m_column = 0; // a terminal's line discipline has already turned LF into CR LF
    moveToRow(m_row + 1);
}

void TerminalReader::moveToRow(qsizetype row) {
    m_row = std::max<qsizetype>(0, row);
    while (static_cast<qsizetype>(m_rows.size()) <= m_row)
        m_rows.emplace_back();
}

void TerminalReader::sequence(char16_t final) {
    if (m_parameters.startsWith(QLatin1Char('?')))
        return; // private modes: cursor visibility, synchronised updates
    const qsizetype lowestReachable =
        std::max<qsizetype>(0, static_cast<qsizetype>(m_rows.size()) - screenRows);
    const int count = std::max(1, firstNumber(m_parameters, 1));
    switch (final) {
    case u'A':
    case u'F':
        m_row = std::max(lowestReachable, m_row - count);
        if (final == u'F')
            m_column = 0;
        break;
    case u'B':
    case u'E':
        m_row = std::min(static_cast<qsizetype>(m_rows.size()) - 1, m_row + count);
        if (final == u'E')
            m_column = 0;
        break;
    case u'C':
        m_column = std::min(longestRow, m_column + count);
        break;
    case u'D':
        m_column = std::max<qsizetype>(0, m_column - count);
        break;
    case u'G':
        m_column = std::clamp<qsizetype>(firstNumber(m_parameters, 1) - 1, 0, longestRow);
        break;
    case u'K':
        eraseLine(firstNumber(m_parameters, 0));
        break;
    case u'J':
        eraseLine(0);
        for (std::size_t below = static_cast<std::size_t>(m_row) + 1; below < m_rows.size(); ++below) {
            m_rows[below].changed |= !m_rows[below].text.isEmpty();
            m_rows[below].text.clear();
        }
        break;
    default:
        break; // colours and everything that draws nothing
    }
}

void TerminalReader::eraseLine(int mode) {
    Row &row = current();
    const QString before = row.text;
    if (mode == 2)
        row.text.clear();
    else if (mode == 1)
        row.text.replace(0, std::min(m_column, row.text.size()),
                         QString(std::min(m_column, row.text.size()), u' '));
    else
        row.text.truncate(m_column);
    row.changed |= row.text != before;
}

OutputChange TerminalReader::publish() {
    const auto changed = std::ranges::find_if(m_rows, &Row::changed);
    OutputChange change;
    if (changed != m_rows.end()) {
        change.replaces =
            static_cast<int>(std::count_if(changed, m_rows.end(), std::mem_fn(&Row::published)));
        for (auto row = changed; row != m_rows.end(); ++row) {
            const bool isBlankEnd = row + 1 == m_rows.end() && !row->ended && row->text.isEmpty();
            row->published = !isBlankEnd;
            row->changed = false;
            if (row->published)
                change.lines.append(withoutEchoedNul(row->text));
        }
        change.lastLineOpen = m_rows.back().published && !m_rows.back().ended;
    }
    const auto scrolledOff = static_cast<qsizetype>(m_rows.size()) - screenRows;
    if (scrolledOff > 0) {
        m_rows.erase(m_rows.begin(), m_rows.begin() + scrolledOff);
        m_row = std::max<qsizetype>(0, m_row - scrolledOff);
    }
    return change;
}

} // namespace larkspur
