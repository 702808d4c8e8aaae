#include "core/brew/PackageName.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

constexpr qsizetype longest = 200;
const QString tapPattern = QStringLiteral("[A-Za-z0-9][A-Za-z0-9_.\\-]*/[A-Za-z0-9][A-Za-z0-9_.\\-]*");

/// Brew takes words with such endings for recipes and bottles that lie in the working folder.
bool looksLikeFile(const QString &name) {
    static constexpr QLatin1String endings[] = {QLatin1String(".rb"), QLatin1String(".json"),
                                                QLatin1String(".gz"), QLatin1String(".tar")};
    return std::ranges::any_of(
        endings, [&name](QLatin1String ending) { return name.endsWith(ending, Qt::CaseInsensitive); });
}

} // namespace

std::optional<PackageName> PackageName::parse(const QString &text) {
    static const QRegularExpression pattern(QStringLiteral("\\A(?:") + tapPattern +
                                            QStringLiteral("/)?[A-Za-z0-9@][A-Za-z0-9_@.+\\-]*\\z"));
    if (text.size() > longest || looksLikeFile(text) || !pattern.match(text).hasMatch())
        return std::nullopt;
    return PackageName(text);
}

QString PackageName::shortName() const {
    return larkspur::shortName(m_text);
}

std::optional<TapName> TapName::parse(const QString &text) {
    static const QRegularExpression pattern(QStringLiteral("\\A") + tapPattern + QStringLiteral("\\z"));
    if (text.size() > longest || !pattern.match(text).hasMatch())
        return std::nullopt;
    return TapName(text);
}

std::optional<SearchText> SearchText::parse(const QString &text) {
    const QString wanted = text.trimmed();
    if (wanted.isEmpty() || wanted.startsWith(QLatin1Char('-')) || wanted.contains(QChar::Null))
        return std::nullopt;
    return SearchText(wanted);
}

bool isPlainVersion(const QString &version) {
    return !version.isEmpty() && version.size() <= longest && !version.startsWith(QLatin1Char('.')) &&
           std::ranges::none_of(version, [](QChar character) {
               return character == QLatin1Char('/') || character.category() == QChar::Other_Control;
           });
}

QString shortName(const QString &name) {
    return name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace larkspur
