#include "core/output/OperationProgress.h"

#include "core/output/TerminalReader.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

/// The package that a header names: the last part of a tap-qualified name. Words that name no package yield
/// nothing.
std::optional<QString> itemOfHeader(const QString &line) {
    static const QRegularExpression header(QStringLiteral(
        "(?m)^==> (?:Upgrading |Installing |Installing Cask |Reinstalling |Fetching downloads for: )"
        "([A-Za-z@][\\w@.+\\-]*)"));
    static const QRegularExpression qualified(QStringLiteral("\\G(?:/[\\w@.+\\-]+){2}"));
    static const QRegularExpression nextWord(QStringLiteral("\\G ([A-Za-z@][\\w@.+\\-]*)"));
    const QRegularExpressionMatch match = header.match(line);
    if (!match.hasMatch())
        return std::nullopt;
    QString word = match.captured(1);
    qsizetype end = match.capturedEnd(1);
    if (word == QLatin1String("dependencies"))
        return std::nullopt;
    if (word == QLatin1String("Cask")) {
        const QRegularExpressionMatch token = nextWord.match(line, end);
        if (!token.hasMatch())
            return std::nullopt;
        word = token.captured(1);
        end = token.capturedEnd(1);
    }
    const QRegularExpressionMatch rest = qualified.match(line, end);
    if (!rest.hasMatch())
        return word;
    const QString path = rest.captured();
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

double bytes(QStringView number, QStringView unit) {
    double factor = 1;
    if (unit.startsWith(QLatin1Char('K')))
        factor = 1e3;
    else if (unit.startsWith(QLatin1Char('M')))
        factor = 1e6;
    else if (unit.startsWith(QLatin1Char('G')))
        factor = 1e9;
    return number.toDouble() * factor;
}

} // namespace

void OperationProgress::apply(const OutputChange &change) {
    static const QRegularExpression step(
        QStringLiteral("(?m)^==> (?:Upgrading|Installing|Reinstalling)(?: Cask)? [A-Za-z@][\\w@.+\\-]*"));
    for (int i = 0; i < change.replaces && !m_recentSteps.empty(); ++i) {
        m_steps -= m_recentSteps.back() ? 1 : 0;
        m_recentSteps.pop_back();
    }
    bool stepped = false;
    bool downloaded = false;
    for (qsizetype i = 0; i < change.lines.size(); ++i) {
        const QString &line = change.lines[i];
        const bool isComplete = i + 1 < change.lines.size() || !change.lastLineOpen;
        bool isStep = false;
        if (isComplete && line.startsWith(QLatin1String("==> "))) {
            readHeader(line);
            isStep = !m_hasSeenPercentage && step.match(line).hasMatch();
        } else {
            downloaded = readDownload(line) || downloaded;
        }
        readPercentage(line);
        m_steps += isStep ? 1 : 0;
        stepped = stepped || isStep;
        m_recentSteps.push_back(isStep);
    }
    while (m_recentSteps.size() > TerminalReader::screenRows)
        m_recentSteps.pop_front();
    updateFraction(stepped, downloaded);
}

void OperationProgress::beginPackage(const QString &name, int done, int total) {
    *this = OperationProgress();
    m_currentItem = name;
    m_packagesDone = done;
    m_packages = total;
}

std::optional<double> OperationProgress::fraction() const {
    if (m_packages == 0)
        return m_fraction;
    return (m_packagesDone + m_fraction.value_or(0)) / m_packages;
}

void OperationProgress::readHeader(const QString &line) {
    if (line.startsWith(QLatin1String("==> Fetching downloads for: ")))
        m_downloads.clear();
    if (auto item = itemOfHeader(line))
        m_currentItem = std::move(item);
}

void OperationProgress::readPercentage(const QString &line) {
    if (!line.contains(QLatin1Char('%')))
        return;
    static const QRegularExpression percentage(QStringLiteral("(\\d{1,3}(?:\\.\\d+)?)%"));
    auto matches = percentage.globalMatch(line);
    QString last;
    while (matches.hasNext())
        last = matches.next().captured(1);
    bool isNumber = false;
    const double value = last.toDouble(&isNumber);
    if (!isNumber || value < 0 || value > 100)
        return;
    m_hasSeenPercentage = true;
    m_fraction = value / 100;
}

bool OperationProgress::readDownload(const QString &line) {
    static const QRegularExpression row(QStringLiteral(
        "^\\S+ (.+?)\\s+[#\\-]*\\s*Downloading\\s+([\\d.]+)([KMGT]?B)/\\s*([\\d.]+)([KMGT]?B)"));
    if (line.contains(QLatin1String("Downloading "))) {
        const QRegularExpressionMatch match = row.match(line);
        if (!match.hasMatch())
            return false;
        m_downloads[match.captured(1)] = {bytes(match.capturedView(2), match.capturedView(3)),
                                          bytes(match.capturedView(4), match.capturedView(5))};
        return true;
    }
    if (m_downloads.isEmpty() || !line.startsWith(QChar(0x2714)))
        return false;
    const auto finished = m_downloads.find(line.section(QLatin1Char(' '), 1).trimmed());
    if (finished == m_downloads.end())
        return false;
    finished->done = finished->total;
    return true;
}

void OperationProgress::updateFraction(bool stepped, bool downloaded) {
    if (m_hasSeenPercentage)
        return;
    if (stepped && m_totalSteps && *m_totalSteps > 0) {
        m_fraction = std::min(1.0, static_cast<double>(m_steps) / *m_totalSteps);
    } else if (downloaded) {
        double done = 0;
        double total = 0;
        for (const Download &download : std::as_const(m_downloads)) {
            done += download.done;
            total += download.total;
        }
        if (total > 0)
            m_fraction = std::clamp(done / total, 0.0, 1.0);
    }
}

} // namespace larkspur
