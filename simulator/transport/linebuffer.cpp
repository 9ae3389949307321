#include "transport/linebuffer.h"

#include <utility>

namespace scnsim {

void LineBuffer::append(std::string_view bytes)
{
    for (;;) {
        const std::size_t end = bytes.find('\n');
        if (end == std::string_view::npos) {
            appendToLine(bytes);
            return;
        }
        appendToLine(bytes.substr(0, end));
        finishLine();
        bytes.remove_prefix(end + 1);
    }
}

LineBuffer::Item LineBuffer::take()
{
    Item item = std::move(m_items.front());
    m_items.pop_front();
    return item;
}

void LineBuffer::appendToLine(std::string_view bytes)
{
    if (m_discarding) {
        return;
    }
    if (m_line.size() + bytes.size() <= kLongestLine) {
        m_line += bytes;
        return;
    }
    m_items.push_back({true, {}});
    m_line.clear();
    m_discarding = true;
}

void LineBuffer::finishLine()
{
    if (!m_discarding) {
        if (!m_line.empty() && m_line.back() == '\r') {
            m_line.pop_back();
        }
        m_items.push_back({false, std::move(m_line)});
    }
    m_line.clear();
    m_discarding = false;
}

} // namespace scnsim
