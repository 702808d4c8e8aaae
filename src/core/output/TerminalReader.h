#pragma once

#include "core/output/OutputChange.h"

#include <QByteArray>
#include <QStringDecoder>

#include <vector>

namespace larkspur {

/// Turns the output of a child on a terminal into lines: carriage returns and cursor movements overwrite the
/// rows that are still on the screen instead of adding lines, erasing works, every other control sequence
/// vanishes. Each feed yields at most one change, whatever was redrawn in between.
class TerminalReader {
  public:
    /// Rows that cursor movements can reach, as on a real screen.
    static constexpr int screenRows = 40;
    /// A row longer than this continues on the next one, so that output without line ends stays bounded.
    static constexpr qsizetype longestRow = 64 * 1024;

    OutputChange feed(QByteArrayView bytes);

    /// The end of the output: the last row counts as complete.
    OutputChange finish();

  private:
    struct Row {
        QString text;
        bool published = false; ///< the consumer has a line for it
        bool ended = false;     ///< a line end came after it
        bool changed = false;
    };
    enum class State { Text, Escape, Sequence, Command, CommandEscape };

    void take(char16_t unit);
    void takeText(QStringView text);
    void control(char16_t unit);
    void sequence(char16_t final);
    void lineFeed();
    void eraseLine(int mode);
    void moveToRow(qsizetype row);
    Row &current() { return m_rows[static_cast<std::size_t>(m_row)]; }
    OutputChange publish();

    QStringDecoder m_decoder{QStringDecoder::Utf8};
    std::vector<Row> m_rows{1};
    qsizetype m_row = 0;
    qsizetype m_column = 0;
    State m_state = State::Text;
    QString m_parameters;
};

} // namespace larkspur
