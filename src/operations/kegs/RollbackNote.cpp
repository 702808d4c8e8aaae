#include "operations/kegs/RollbackNote.h"

#include "core/brew/PackageName.h"

namespace larkspur {

QJsonObject RollbackNote::toJson() const {
    return {{QStringLiteral("prefix"), prefix},
            {QStringLiteral("formula"), formula},
            {QStringLiteral("version"), version},
            {QStringLiteral("previousVersion"), previousVersion},
            {QStringLiteral("wasLinked"), wasLinked},
            {QStringLiteral("wasPinned"), wasPinned},
            {QStringLiteral("isOnRequest"), isOnRequest},
            {QStringLiteral("isExchanging"), phase == Phase::Exchanging}};
}

std::optional<RollbackNote> RollbackNote::fromJson(const QJsonObject &json, const QString &prefix) {
    for (const char *key : {"prefix", "formula", "version", "previousVersion"})
        if (!json.value(QLatin1String(key)).isString())
            return std::nullopt;
    for (const char *key : {"wasLinked", "wasPinned", "isOnRequest", "isExchanging"})
        if (!json.value(QLatin1String(key)).isBool())
            return std::nullopt;
    const auto text = [&json](const char *key) { return json.value(QLatin1String(key)).toString(); };
    const auto flag = [&json](const char *key) { return json.value(QLatin1String(key)).toBool(); };
    const RollbackNote note{.prefix = text("prefix"),
                            .formula = text("formula"),
                            .version = text("version"),
                            .previousVersion = text("previousVersion"),
                            .wasLinked = flag("wasLinked"),
                            .wasPinned = flag("wasPinned"),
                            .isOnRequest = flag("isOnRequest"),
                            .phase = flag("isExchanging") ? Phase::Exchanging : Phase::Preparing};
    const auto name = PackageName::parse(note.formula);
    const bool isPlain = name && !name->isQualified() && isPlainVersion(note.version) &&
                         (note.previousVersion.isEmpty() || isPlainVersion(note.previousVersion));
    return isPlain && !prefix.isEmpty() && note.prefix == prefix ? std::optional(note) : std::nullopt;
}

} // namespace larkspur
