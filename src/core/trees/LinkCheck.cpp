#include "core/trees/LinkCheck.h"

#include <QDir>
#include <QFileInfo>

namespace larkspur {

std::expected<void, QString> withoutLinks(const QString &root, const QString &path) {
    const QString clean = QDir::cleanPath(path);
    QString reached = QDir::cleanPath(root);
    if (root.isEmpty() || !clean.startsWith(reached + QLatin1Char('/')) ||
        path.split(QLatin1Char('/')).contains(QLatin1String("..")))
        return std::unexpected(QStringLiteral("%1 does not lie in %2").arg(path, root));
    for (const QString &name : clean.mid(reached.size() + 1).split(QLatin1Char('/'))) {
        reached += QLatin1Char('/') + name;
        if (QFileInfo(reached).isSymLink())
            return std::unexpected(
                QStringLiteral("%1 is a link, and what it leads to is not touched").arg(reached));
    }
    return {};
}

} // namespace larkspur
