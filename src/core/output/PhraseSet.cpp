#include "core/output/PhraseSet.h"

#include <deque>

namespace larkspur {

namespace {

constexpr char32_t lower(char32_t c) {
    return c >= U'A' && c <= U'Z' ? c + (U'a' - U'A') : c;
}

} // namespace

PhraseSet::PhraseSet(std::initializer_list<std::string_view> phrases)
    : m_nodes(1) {
    int phrase = 0;
    for (const std::string_view text : phrases)
        add(text, bit(phrase++));
    connect();
}

void PhraseSet::add(std::string_view phrase, Found bit) {
    std::size_t node = 0;
    for (const char c : phrase) {
        const auto letter = static_cast<std::size_t>(lower(static_cast<unsigned char>(c)));
        if (m_nodes[node].next[letter] == 0) {
            m_nodes[node].next[letter] = static_cast<std::uint16_t>(m_nodes.size());
            m_nodes.emplace_back();
        }
        node = m_nodes[node].next[letter];
    }
    m_nodes[node].found |= bit;
}

/// Gives each node, for every letter that its phrases do not go on with, the node of the longest end of what
/// was read that another phrase begins with.
void PhraseSet::connect() {
    std::vector<std::uint16_t> fallback(m_nodes.size(), 0);
    std::deque<std::uint16_t> open;
    for (const std::uint16_t child : m_nodes[0].next)
        if (child != 0)
            open.push_back(child);
    while (!open.empty()) {
        const std::uint16_t node = open.front();
        open.pop_front();
        m_nodes[node].found |= m_nodes[fallback[node]].found;
        for (std::size_t letter = 0; letter < alphabet; ++letter) {
            const std::uint16_t child = m_nodes[node].next[letter];
            const std::uint16_t other = m_nodes[fallback[node]].next[letter];
            if (child == 0) {
                m_nodes[node].next[letter] = other;
            } else {
                fallback[child] = other;
                open.push_back(child);
            }
        }
    }
}

PhraseSet::Found PhraseSet::in(QStringView text) const {
    Found found = 0;
    std::size_t node = 0;
    for (const QChar c : text) {
        const char32_t letter = lower(c.unicode());
        node = letter < alphabet ? m_nodes[node].next[letter] : 0;
        found |= m_nodes[node].found;
    }
    return found;
}

} // namespace larkspur
