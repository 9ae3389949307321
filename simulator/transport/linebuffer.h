#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

namespace scnsim {

/// Cuts a stream of bytes into lines at the line feed; a carriage return before it is dropped. A
/// line beyond the limit is thrown away up to its line feed and tells so once.
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
