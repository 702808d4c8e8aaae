#pragma once

#include <QStringView>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace larkspur {

/// Looks for several phrases in one pass over a text, whatever the case of their letters. For the rules that
/// read the output of Homebrew, which can be hundreds of thousands of lines.
class PhraseSet {
  public:
    /// One bit for each phrase, in the order in which they were given.
    using Found = std::uint64_t;

    /// Up to 64 phrases of ASCII characters.
    PhraseSet(std::initializer_list<std::string_view> phrases);

    Found in(QStringView text) const;

    static constexpr Found bit(int phrase) { return Found{1} << phrase; }

  private:
    static constexpr std::size_t alphabet = 128;
    struct Node {
        std::array<std::uint16_t, alphabet> next{};
        Found found = 0;
    };
    void add(std::string_view phrase, Found bit);
    void connect();

    std::vector<Node> m_nodes; ///< the automaton of Aho and Corasick; the first is its start
};

} // namespace larkspur
