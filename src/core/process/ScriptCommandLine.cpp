#include "core/process/ScriptCommandLine.h"

namespace larkspur {

QString scriptCommandLine(const QString &program, const QStringList &arguments, const QString &before) {
    QString inner = before + (QStringList{program} + arguments).join(QLatin1Char(' '));
    inner.replace(QLatin1String("'"), QLatin1String("'\\''"));
    return QStringLiteral("/usr/bin/script -q /dev/null /bin/zsh -c '") + inner + QLatin1Char('\'');
}

} // namespace larkspur
