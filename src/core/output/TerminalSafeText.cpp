#include "core/output/TerminalSafeText.h"

#include <algorithm>

namespace larkspur {

namespace {

bool isControl(QChar character) {
    const char16_t unit = character.unicode();
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F);
}

/// Marks, embeddings, overrides and isolates of right-to-left writing.
bool turnsDirection(QChar character) {
    const char16_t unit = character.unicode();
    return unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

bool isLayout(QChar character) {
    return character == QLatin1Char('\n') || character == QLatin1Char('\t');
}

bool isUnsafe(QChar character) {
    return (isControl(character) && !isLayout(character)) || turnsDirection(character);
}

} // namespace

QString safeForTerminal(const QString &text) {
    QString safe = text;
    safe.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (safe.endsWith(QLatin1Char('\r')))
        safe.chop(1);
    std::replace_if(safe.begin(), safe.end(), isUnsafe, QChar(QChar::ReplacementCharacter));
    return safe;
}

QString safeForTerminalLine(const QString &text) {
    QString line = safeForTerminal(text);
    std::replace_if(line.begin(), line.end(), isLayout, QChar(QLatin1Char(' ')));
    return line;
}

QString safeJsonForTerminal(const QString &document) {
    QString safe;
    safe.reserve(document.size());
    for (const QChar character : document)
        // Between the values stand only blanks, line feeds and signs: what is replaced is part of a string.
        if (isUnsafe(character))
            safe += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            safe += character;
    return safe;
}

} // namespace larkspur
