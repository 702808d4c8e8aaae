#include "Screen.h"

#include <QThread>

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>

namespace sample {

namespace {

constexpr int framesPerSecond = 20;
constexpr double kilobytesPerFrame = 150;
constexpr int barWidth = 60;

void print(std::FILE *stream, const QString &text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

QString amount(double kilobytes) {
    return kilobytes < 1000
               ? QString::number(kilobytes, 'f', 1).rightJustified(5) + QStringLiteral("KB")
               : QString::number(kilobytes / 1000, 'f', 1).rightJustified(5) + QStringLiteral("MB");
}

} // namespace

QString sentence(const QStringList &names) {
    if (names.size() < 2)
        return names.join(QString());
    return names.first(names.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" and ") + names.last();
}

Screen::Screen()
    : m_isTerminal(::isatty(STDOUT_FILENO) != 0)
    , m_hasColours(m_isTerminal && qEnvironmentVariableIsEmpty("HOMEBREW_NO_COLOR"))
    , m_isPaced(qEnvironmentVariable("HOMEBREW_SAMPLE_PACE") != QLatin1String("off")) {}

QString Screen::coloured(const char *colour, const QString &text) const {
    return m_hasColours
               ? QStringLiteral("\u001B[%1m").arg(QLatin1String(colour)) + text + QStringLiteral("\u001B[0m")
               : text;
}

void Screen::line(const QString &text) const {
    print(stdout, text + QLatin1Char('\n'));
}

void Screen::header(const QString &text) const {
    line(coloured("32", QStringLiteral("==>")) + QLatin1Char(' ') + coloured("1", text));
}

void Screen::warning(const QString &text) const {
    note(coloured("33", QStringLiteral("Warning:")) + QLatin1Char(' ') + text);
}

void Screen::error(const QString &text) const {
    note(coloured("31", QStringLiteral("Error:")) + QLatin1Char(' ') + text);
}

void Screen::note(const QString &text) const {
    print(stderr, text + QLatin1Char('\n'));
}

void Screen::pause(int milliseconds) const {
    if (m_isPaced)
        QThread::msleep(static_cast<unsigned long>(milliseconds));
}

void Screen::fetch(const QStringList &names, const QList<Download> &downloads) const {
    const QString title = QStringLiteral("Fetching downloads for: ") + sentence(names);
    if (m_isTerminal) {
        header(title);
        drawQueue(downloads);
        return;
    }
    note(QStringLiteral("==> ") + title);
    for (const Download &download : downloads) {
        pause(static_cast<int>(download.kilobytes / kilobytesPerFrame * 1000 / framesPerSecond));
        note(QStringLiteral("✔︎ ") + download.label);
    }
}

void Screen::drawQueue(const QList<Download> &downloads) const {
    static constexpr std::array<char16_t, 6> spinner{u'⠋', u'⠙', u'⠚', u'⠞', u'⠖', u'⠦'};
    constexpr int simultaneous = 4;
    QList<double> done(downloads.size(), 0.0);
    const auto isDone = [&](qsizetype i) { return done[i] >= downloads[i].kilobytes; };
    print(stdout, QStringLiteral("\u001B[?25l"));
    qsizetype first = 0; // rows above are finished and stay
    for (std::size_t frame = 0; first < downloads.size(); ++frame) {
        const qsizetype last = std::min(first + simultaneous, downloads.size());
        QString text = QStringLiteral("\u001B[?2026h");
        for (qsizetype i = first; i < last; ++i) {
            const double share = std::min(1.0, done[i] / std::max(1, downloads[i].kilobytes));
            if (i > first)
                text += QLatin1Char('\n');
            text += QStringLiteral("\u001B[K");
            if (isDone(i))
                text += coloured("32", QStringLiteral("✔︎")) + QLatin1Char(' ') + downloads[i].label;
            else
                text +=
                    coloured("34", QString(QChar(spinner[frame % spinner.size()]))) + QLatin1Char(' ') +
                    downloads[i].label + QLatin1Char(' ') +
                    QString(static_cast<int>(share * barWidth), QLatin1Char('#')).leftJustified(barWidth) +
                    QStringLiteral(" Downloading ") + amount(done[i]) + QLatin1Char('/') +
                    amount(downloads[i].kilobytes);
        }
        const auto running = std::count_if(done.begin() + first, done.begin() + last,
                                           [&, i = first](double) mutable { return !isDone(i++); });
        if (running == 0) {
            print(stdout, text + QStringLiteral("\n\u001B[?2026l"));
            first = last;
            continue;
        }
        if (last - first > 1)
            text += QStringLiteral("\u001B[%1F").arg(last - first - 1);
        else
            text += QStringLiteral("\u001B[0G");
        print(stdout, text + QStringLiteral("\u001B[?2026l"));
        pause(1000 / framesPerSecond);
        for (qsizetype i = first; i < last; ++i)
            done[i] += m_isPaced ? kilobytesPerFrame * 4 / static_cast<double>(running)
                                 : downloads[i].kilobytes / 3.0 + 1;
    }
    print(stdout, QStringLiteral("\u001B[?25h"));
}

} // namespace sample
