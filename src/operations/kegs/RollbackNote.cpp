#include "operations/kegs/RollbackNote.h"

#include "core/files/AtomicFile.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

bool writeRollbackNote(const QString &path, const RollbackNote &note) {
    const QJsonObject json{{QStringLiteral("prefix"), note.prefix},
                           {QStringLiteral("formula"), note.formula},
                           {QStringLiteral("version"), note.version},
                           {QStringLiteral("previousVersion"), note.previousVersion},
                           {QStringLiteral("wasLinked"), note.wasLinked},
                           {QStringLiteral("wasPinned"), note.wasPinned},
                           {QStringLiteral("isOnRequest"), note.isOnRequest},
                           {QStringLiteral("isExchanging"), note.phase == RollbackNote::Phase::Exchanging}};
    return writeFileAtomically(path, QJsonDocument(json).toJson()).has_value();
}

std::optional<RollbackNote> readRollbackNote(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
    const auto text = [&json](const char *key) { return json.value(QLatin1String(key)).toString(); };
    const auto flag = [&json](const char *key) { return json.value(QLatin1String(key)).toBool(); };
    RollbackNote note{.prefix = text("prefix"),
                      .formula = text("formula"),
                      .version = text("version"),
                      .previousVersion = text("previousVersion"),
                      .wasLinked = flag("wasLinked"),
                      .wasPinned = flag("wasPinned"),
                      .isOnRequest = flag("isOnRequest"),
                      .phase = flag("isExchanging") ? RollbackNote::Phase::Exchanging
                                                    : RollbackNote::Phase::Preparing};
    const bool isUsable = !note.prefix.isEmpty() && !note.formula.isEmpty() && !note.version.isEmpty() &&
                          !note.formula.contains(QLatin1Char('/')) &&
                          !note.version.contains(QLatin1Char('/'));
    return isUsable ? std::optional(note) : std::nullopt;
}

} // namespace larkspur
