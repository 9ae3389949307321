#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace scnsim {

/// Splits a byte stream into lines at line feeds, dropping a carriage return before one. A line
/// over the limit is discarded up to its line feed and reported once.
class LineBuffer
{
public:
    static constexpr std::size_t kLongestLine = 65536;

    struct Item
    {
        bool tooLong = false;
        std::string line;
    };

    void append(std::string_view bytes);

    bool hasItem() const { return !m_items.empty(); }
    /// Removes and returns the oldest item; there must be one.
    Item take();

private:
    void appendToLine(std::string_view bytes);
    void finishLine();

    std::deque<Item> m_items;
    std::string m_line;
    bool m_discarding = false;
};

} // namespace scnsim
