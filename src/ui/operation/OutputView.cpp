#include "ui/operation/OutputView.h"

#include "operations/OperationRun.h"
#include "ui/theme/Colours.h"

#include <QFontDatabase>
#include <QScrollBar>
#include <QTextBlock>

#include <algorithm>
#include <utility>

namespace larkspur::ui {

namespace {

constexpr int shownLines = 2000;
constexpr qsizetype linesAtOnce = 400;   // per flush: laying out more would stall the interface
constexpr int flushInterval = 60;        // milliseconds
constexpr qsizetype longestShown = 2000; // characters of a line: longer ones would stall the layout

} // namespace

OutputView::OutputView(QWidget *parent)
    : QPlainTextEdit(parent) {
    setReadOnly(true);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setMaximumBlockCount(shownLines);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setFrameShape(QFrame::NoFrame);
    setUndoRedoEnabled(false);
    setAccessibleName(tr("Output of the operation"));
    setMinimumHeight(180);
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(flushInterval);
    connect(&m_flushTimer, &QTimer::timeout, this, &OutputView::flush);
}

void OutputView::follow(OperationRun *run) {
    clear();
    m_pending.clear();
    m_replaces = 0;
    take({0, run->transcript().lines(), false});
    flush();
    disconnect(m_source);
    m_source = connect(run, &OperationRun::outputReceived, this, &OutputView::take);
}

void OutputView::take(const OutputChange &change) {
    int replaces = change.replaces;
    while (replaces > 0 && !m_pending.isEmpty()) {
        m_pending.removeLast();
        --replaces;
    }
    m_replaces += replaces;
    m_pending += change.lines;
    if (m_pending.size() > shownLines) { // what is shown by now has scrolled out of reach
        m_pending = m_pending.last(shownLines);
        m_startsAnew = true;
    }
    if (!m_flushTimer.isActive())
        m_flushTimer.start();
}

void OutputView::flush() {
    QScrollBar *bar = verticalScrollBar();
    const bool atEnd = bar->value() >= bar->maximum() - 2;
    if (std::exchange(m_startsAnew, false)) {
        clear();
        m_replaces = 0;
    }
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    takeBack(cursor);
    cursor.movePosition(QTextCursor::End);
    const QStringList lines = m_pending.first(std::min(linesAtOnce, m_pending.size()));
    for (const QString &line : lines) {
        if (!document()->isEmpty())
            cursor.insertBlock();
        cursor.insertText(line.left(longestShown), formatFor(line));
    }
    cursor.endEditBlock();
    m_pending.remove(0, lines.size());
    if (atEnd)
        bar->setValue(bar->maximum());
    if (!m_pending.isEmpty())
        m_flushTimer.start();
}

void OutputView::takeBack(QTextCursor &cursor) {
    for (; m_replaces > 0; --m_replaces) {
        cursor.movePosition(QTextCursor::End);
        cursor.movePosition(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        cursor.deletePreviousChar();
    }
}

QTextCharFormat OutputView::formatFor(const QString &line) const {
    QTextCharFormat format;
    if (line.contains(QLatin1String("error:"), Qt::CaseInsensitive)) {
        format.setForeground(toneColour(Tone::Bad, palette()));
    } else if (line.contains(QLatin1String("warning:"), Qt::CaseInsensitive)) {
        format.setForeground(toneColour(Tone::Attention, palette()));
    } else if (line.startsWith(QLatin1String("==> "))) {
        format.setFontWeight(QFont::DemiBold);
    }
    return format;
}

} // namespace larkspur::ui
