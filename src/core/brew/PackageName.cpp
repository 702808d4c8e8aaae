#include "core/brew/PackageName.h"

#include <QRegularExpression>

namespace larkspur {

bool isValidPackageName(const QString &name) {
    static const QRegularExpression pattern(
        QStringLiteral("\\A(?:[A-Za-z0-9][A-Za-z0-9_.\\-]*/[A-Za-z0-9][A-Za-z0-9_.\\-]*/)?"
                       "[A-Za-z0-9@][A-Za-z0-9_@.+\\-]*\\z"));
    return name.size() <= 200 && pattern.match(name).hasMatch();
}

QString shortName(const QString &name) {
    return name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace larkspur
