#include "scpi/headerpattern.h"

#include "scpi/pieces.h"

#include <utility>

namespace scnsim {

namespace {

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

} // namespace

std::string upperCase(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        c = upper(c);
    }
    return result;
}

std::vector<std::string> headerNodes(std::string_view text)
{
    return split(upperCase(text), ':');
}

std::string joinedHeader(const std::vector<std::string>& nodes)
{
    return joined(nodes, ':');
}

Mnemonic::Mnemonic(std::string_view spelling)
{
    for (const char c : spelling) {
        if (c < 'a' || c > 'z') {
            m_short += c;
        }
        m_long += upper(c);
    }
}

HeaderPattern::HeaderPattern(std::string_view spelling)
{
    std::string word;
    bool optional = false;
    const auto finishWord = [&] {
        if (!word.empty()) {
            m_nodes.push_back({Mnemonic(word), optional});
            word.clear();
        }
    };
    for (const char c : spelling) {
        switch (c) {
        case '[':
            finishWord();
            optional = true;
            break;
        case ']':
            finishWord();
            optional = false;
            break;
        case ':':
            finishWord();
            break;
        default:
            word += c;
        }
    }
    finishWord();
}

std::vector<std::string> HeaderPattern::spellings() const
{
    std::vector<std::string> all = {std::string()};
    for (const Node& node : m_nodes) {
        std::vector<std::string> longer = node.optional ? all : std::vector<std::string>();
        for (const std::string& begin : all) {
            const std::string prefix = begin.empty() ? begin : begin + ':';
            longer.push_back(prefix + node.word.shortForm());
            if (node.word.longForm() != node.word.shortForm()) {
                longer.push_back(prefix + node.word.longForm());
            }
        }
        all = std::move(longer);
    }
    return all;
}

bool HeaderPattern::matchesFrom(std::size_t node, const std::vector<std::string>& words,
                                std::size_t word) const
{
    if (node == m_nodes.size()) {
        return word == words.size();
    }
    if (word < words.size() && m_nodes[node].word.matches(words[word]) &&
        matchesFrom(node + 1, words, word + 1)) {
        return true;
    }
    return m_nodes[node].optional && matchesFrom(node + 1, words, word);
}

} // namespace scnsim
