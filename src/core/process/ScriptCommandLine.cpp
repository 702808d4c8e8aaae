#include "core/process/ScriptCommandLine.h"

#include <QRegularExpression>

namespace larkspur {

namespace {

QString inSingleQuotes(QString text) {
    text.replace(QLatin1String("'"), QLatin1String("'\\''"));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

/// A plain word means itself to every shell and stays as it is. What only looks plain does not: zsh replaces
/// a leading "=" by the path of a command.
QString shellWord(const QString &word) {
    static const QRegularExpression plain(QStringLiteral("\\A(?!=)[A-Za-z0-9@+=/._:,\\-]+\\z"));
    return plain.match(word).hasMatch() ? word : inSingleQuotes(word);
}

} // namespace

QString scriptCommandLine(const QString &program, const QStringList &arguments, const QString &before) {
    QStringList words{shellWord(program)};
    for (const QString &argument : arguments)
        words.append(shellWord(argument));
    return QStringLiteral("/usr/bin/script -q /dev/null /bin/zsh -c ") +
           inSingleQuotes(before + words.join(QLatin1Char(' ')));
}

} // namespace larkspur
