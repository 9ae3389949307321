#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace scnsim {

/// One word in its two SCPI forms. "VOLTage" matches "VOLT" and "VOLTAGE", nothing between.
class Mnemonic
{
public:
    /// @param spelling the long form with the short form in capitals (digits count as capitals)
    explicit Mnemonic(std::string_view spelling);

    /// @param upper the word in upper case
    bool matches(std::string_view upper) const { return upper == m_short || upper == m_long; }

    const std::string& shortForm() const { return m_short; }
    const std::string& longForm() const { return m_long; }

private:
    std::string m_short;
    std::string m_long;
};

/// A header as the command tables spell it: "SYSTem:ERRor[:NEXT]". A bracket holds one optional
/// node.
class HeaderPattern
{
public:
    explicit HeaderPattern(std::string_view spelling);

    /// @param nodes the header's words in upper case
    bool matches(const std::vector<std::string>& nodes) const { return matchesFrom(0, nodes, 0); }

    /// All spellings of the header, in upper case, words joined by colons.
    std::vector<std::string> spellings() const;

private:
    struct Node
    {
        Mnemonic word;
        bool optional;
    };

    bool matchesFrom(std::size_t node, const std::vector<std::string>& words,
                     std::size_t word) const;

    std::vector<Node> m_nodes;
};

/// The words joined by colons.
std::string joinedHeader(const std::vector<std::string>& nodes);

/// The text in upper case, ASCII letters only.
std::string upperCase(std::string_view text);

/// Splits a header at its colons and converts it to upper case.
std::vector<std::string> headerNodes(std::string_view text);

} // namespace scnsim
