#include "operations/packages/OutputByPackage.h"

#include "core/brew/PackageName.h"

#include <QRegularExpression>
#include <QSet>

namespace larkspur {

QHash<QString, QStringList> outputByPackage(const QList<PackageTarget> &packages, const QStringList &output) {
    static const QRegularExpression heading(
        QStringLiteral("^==> (?:Upgrading|Reinstalling|Installing|Uninstalling)(?: Cask)? ([^\\s:]+)\\s*$"));
    static const QRegularExpression error(
        QStringLiteral("^(?:Error: ([^\\s:]+):|Warning: Reverting upgrade for (?:Cask |Formula )?(\\S+))"));
    QSet<QString> names;
    for (const PackageTarget &package : packages)
        names.insert(shortName(package.name));
    QHash<QString, QStringList> lines;
    QString current;
    for (const QString &line : output) {
        QString concerned = current;
        if (line.startsWith(QLatin1String("==> "))) {
            if (const auto match = heading.match(line); match.hasMatch())
                concerned = current = shortName(match.captured(1));
        } else if (line.startsWith(QLatin1String("Error: ")) || line.startsWith(QLatin1String("Warning: "))) {
            const auto match = error.match(line);
            const QString named = shortName(match.captured(match.lastCapturedIndex()));
            if (match.hasMatch() && names.contains(named))
                concerned = named;
        }
        if (names.contains(concerned))
            lines[concerned].append(line);
    }
    return lines;
}

} // namespace larkspur
