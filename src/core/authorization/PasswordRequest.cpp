#include "core/authorization/PasswordRequest.h"

namespace larkspur {

namespace {

constexpr qsizetype longestLine = 300;

/// Control characters, line ends, and marks that turn the direction of writing or cannot be seen.
bool isActive(char32_t character) {
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString oneLine(const QString &text) {
    QString line;
    for (const uint character : text.left(4 * longestLine).toUcs4())
        line += isActive(character) ? QStringView(u" ") : QStringView(QChar::fromUcs4(character));
    line = line.simplified();
    return line.size() > longestLine ? line.left(longestLine - 1) + QStringLiteral("…") : line;
}

} // namespace

PasswordRequest presentable(PasswordRequest request) {
    for (QString *text : {&request.package, &request.command, &request.trigger})
        *text = oneLine(*text);
    return request;
}

QString warningOf(const PasswordRequest &request) {
    return request.isUnusual
               ? QStringLiteral(
                     "Homebrew never needs administrator rights to build a formula. Its recipe may be "
                     "after your password: continue only if you know why it is asked for.")
               : QString();
}

} // namespace larkspur
