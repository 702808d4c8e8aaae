#include "ui/operation/OutputView.h"

#include "operations/OperationRun.h"
#include "ui/theme/Colours.h"

#include <QFontDatabase>
#include <QScrollBar>
#include <QTextBlock>

namespace larkspur::ui {

namespace {

constexpr int shownLines = 5000;
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
    m_pending = run->transcript().lines();
    m_replaces = 0;
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
    if (m_pending.size() > shownLines)
        m_pending = m_pending.last(shownLines);
    if (!m_flushTimer.isActive())
        m_flushTimer.start();
}

void OutputView::flush() {
    QScrollBar *bar = verticalScrollBar();
    const bool atEnd = bar->value() >= bar->maximum() - 2;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    for (; m_replaces > 0; --m_replaces) {
        cursor.movePosition(QTextCursor::End);
        cursor.movePosition(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        cursor.deletePreviousChar();
    }
    cursor.movePosition(QTextCursor::End);
    for (const QString &line : std::as_const(m_pending)) {
        if (!document()->isEmpty())
            cursor.insertBlock();
        cursor.insertText(line.left(longestShown), formatFor(line));
    }
    cursor.endEditBlock();
    m_pending.clear();
    if (atEnd)
        bar->setValue(bar->maximum());
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
