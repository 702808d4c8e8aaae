#include "cli/Terminal.h"

#include "core/errors/AppError.h"
#include "core/output/TerminalSafeText.h"

#include <QJsonDocument>

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace larkspur::cli {

namespace {

void printUnfiltered(std::FILE *stream, const QString &text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

void print(std::FILE *stream, const QString &text) {
    printUnfiltered(stream, safeForTerminal(text));
}

} // namespace

Terminal::Terminal()
    : m_isInteractive(::isatty(STDOUT_FILENO) != 0) {}

int Terminal::width() const {
    winsize size{};
    const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : 80;
}

void Terminal::line(const QString &text) const {
    print(stdout, text + QLatin1Char('\n'));
}

void Terminal::text(const QString &text) const {
    print(stdout, text);
}

void Terminal::unfilteredSequence(const QString &sequence) const {
    printUnfiltered(stdout, sequence);
}

void Terminal::error(const QString &text) const {
    print(stderr, QStringLiteral("larkspur: ") + text + QLatin1Char('\n'));
}

void Terminal::error(const BrewError &failure) const {
    const AppError shown = AppError::from(failure);
    error(shown.message());
    if (failure.kind != BrewError::Kind::Stopped)
        print(stderr, shown.recoverySuggestion() + QLatin1Char('\n'));
}

void Terminal::json(const QJsonObject &object) const {
    printUnfiltered(stdout, safeJsonForTerminal(QString::fromUtf8(QJsonDocument(object).toJson())));
}

void Terminal::json(const QJsonArray &array) const {
    printUnfiltered(stdout, safeJsonForTerminal(QString::fromUtf8(QJsonDocument(array).toJson())));
}

void Terminal::table(const QList<QStringList> &cells) const {
    QList<QStringList> rows = cells;
    for (QStringList &row : rows)
        for (QString &cell : row)
            cell = safeForTerminalLine(cell);
    QList<qsizetype> widths;
    for (const QStringList &row : std::as_const(rows))
        for (qsizetype i = 0; i < row.size(); ++i) {
            if (widths.size() <= i)
                widths.append(0);
            widths[i] = std::max(widths[i], row[i].size());
        }
    for (const QStringList &row : std::as_const(rows)) {
        QString whole;
        for (qsizetype i = 0; i < row.size(); ++i)
            whole += i + 1 < row.size() ? row[i].leftJustified(widths[i] + 2) : row[i];
        if (m_isInteractive && whole.size() > width())
            whole = whole.left(width() - 1) + QStringLiteral("…");
        while (whole.endsWith(QLatin1Char(' ')))
            whole.chop(1);
        line(whole);
    }
}

} // namespace larkspur::cli
