#include "cli/LiveOutput.h"

#include "cli/Terminal.h"
#include "core/output/TerminalReader.h"
#include "core/output/TerminalSafeText.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

const QString startOfEmptyRow = QStringLiteral("\r\u001B[K");

} // namespace

LiveOutput::LiveOutput(const Terminal &terminal)
    : m_terminal(terminal) {}

void LiveOutput::receive(const OutputChange &change) {
    clearBar();
    if (const int rows = takeBack(change.replaces); rows > 0 && m_terminal.isInteractive())
        m_terminal.unfilteredSequence(QStringLiteral("\u001B[%1A\r\u001B[J").arg(rows));
    QString text;
    const int width = m_terminal.width();
    for (const QString &line : change.lines) {
        const QString safe = safeForTerminal(line); // what is printed is what takes up rows
        text += safe + QLatin1Char('\n');
        m_rows.push_back(1 + static_cast<int>(std::max<qsizetype>(0, safe.size() - 1) / width));
    }
    while (m_rows.size() > TerminalReader::screenRows)
        m_rows.pop_front();
    m_terminal.text(text);
}

int LiveOutput::takeBack(int lines) {
    int rows = 0;
    for (int i = 0; i < lines && !m_rows.empty(); ++i) {
        rows += m_rows.back();
        m_rows.pop_back();
    }
    return rows;
}

void LiveOutput::showProgress(const OperationProgress &progress) {
    if (m_terminal.isInteractive())
        drawBar(progressBar(progress, m_terminal.width() - 1));
}

void LiveOutput::showNote(const QString &note) {
    if (m_terminal.isInteractive())
        drawBar(note.left(m_terminal.width() - 1));
}

void LiveOutput::drawBar(const QString &text) {
    if (text == m_bar)
        return;
    m_terminal.unfilteredSequence(startOfEmptyRow);
    m_terminal.text(safeForTerminalLine(text));
    m_bar = text;
}

void LiveOutput::clearBar() {
    if (m_bar.isEmpty())
        return;
    m_terminal.unfilteredSequence(startOfEmptyRow);
    m_bar.clear();
}

QString progressBar(const OperationProgress &progress, int width) {
    constexpr int shortestBar = 10;
    constexpr int longestBar = 40;
    const QString item = progress.currentItem().value_or(QStringLiteral("working")).left(30);
    if (!progress.fraction())
        return item + QStringLiteral("…");
    const int percent = static_cast<int>(*progress.fraction() * 100 + 0.5);
    const int room = std::clamp(width - static_cast<int>(item.size()) - 10, shortestBar, longestBar);
    const int filled = percent * room / 100;
    return QStringLiteral("%1  [%2%3]  %4%")
        .arg(item, QString(filled, QLatin1Char('#')), QString(room - filled, QLatin1Char('-')))
        .arg(percent);
}

} // namespace larkspur::cli
