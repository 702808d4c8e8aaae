#pragma once

#include "core/brew/PackageName.h"

#include <QStringList>

#include <initializer_list>

namespace larkspur {

/// One word of a brew command line: a literal of the program's own, or a value of a type that cannot hold
/// anything that brew would take for something else. Text from outside has no way in but through such a type.
class BrewWord {
  public:
    template <std::size_t Size>
    BrewWord(const char (&literal)[Size]) // NOLINT: words are written as they are typed
        : m_text(QString::fromLatin1(literal, static_cast<qsizetype>(Size) - 1)) {}
    BrewWord(const PackageName &name) // NOLINT
        : m_text(name.text()) {}
    BrewWord(const TapName &name) // NOLINT
        : m_text(name.text()) {}
    BrewWord(const SearchText &text) // NOLINT
        : m_text(text.text()) {}

    const QString &text() const { return m_text; }

  private:
    QString m_text;
};

/// The words after "brew".
class BrewArguments {
  public:
    BrewArguments() = default;
    BrewArguments(std::initializer_list<BrewWord> words) {
        for (const BrewWord &word : words)
            m_words.append(word.text());
    }

    void append(const BrewWord &word) { m_words.append(word.text()); }
    BrewArguments operator+(const BrewArguments &more) const {
        BrewArguments all = *this;
        all.m_words += more.m_words;
        return all;
    }

    const QStringList &words() const { return m_words; }
    bool isEmpty() const { return m_words.isEmpty(); }
    /// The subcommand; empty if there is none.
    QString subcommand() const { return m_words.value(0); }

  private:
    QStringList m_words;
};

} // namespace larkspur
