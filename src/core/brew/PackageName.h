#pragma once

#include <QString>

#include <optional>

namespace larkspur {

/// A name that may be given to brew: a formula name, a cask token or user/repo/name. It cannot hold anything
/// that brew could read as an option, a path, a file or more than one word, wherever it came from.
class PackageName {
  public:
    static std::optional<PackageName> parse(const QString &text);

    /// As it is given to brew.
    const QString &text() const { return m_text; }
    /// The last part: what Cellar and Caskroom folders are called.
    QString shortName() const;
    bool isQualified() const { return m_text.contains(QLatin1Char('/')); }

    bool operator==(const PackageName &) const = default;
    bool operator==(const QString &text) const { return m_text == text; }

  private:
    explicit PackageName(QString text)
        : m_text(std::move(text)) {}
    QString m_text;
};

/// A tap, user/repo. As above.
class TapName {
  public:
    static std::optional<TapName> parse(const QString &text);

    const QString &text() const { return m_text; }

    bool operator==(const TapName &) const = default;

  private:
    explicit TapName(QString text)
        : m_text(std::move(text)) {}
    QString m_text;
};

/// What a person searches for; cannot be empty or an option.
class SearchText {
  public:
    static std::optional<SearchText> parse(const QString &text);

    const QString &text() const { return m_text; }

  private:
    explicit SearchText(QString text)
        : m_text(std::move(text)) {}
    QString m_text;
};

/// True for the name of a version's folder in the Cellar or the Caskroom: one plain path component.
bool isPlainVersion(const QString &version);

/// The last part of a name that came from Homebrew.
QString shortName(const QString &name);

} // namespace larkspur
