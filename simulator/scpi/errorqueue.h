#pragma once

#include "scpi/errors.h"

#include <cstddef>
#include <deque>
#include <string>

namespace scnsim {

/// The instrument's error queue: first in, first out, bounded. When it is full, the newest entry
/// gives way to -350 "Queue overflow" and later errors are lost, as the SCPI standard wants it.
class ErrorQueue
{
public:
    static constexpr std::size_t kCapacity = 20;

    void push(ErrorCode code);

    /// Removes the oldest entry and returns it in its wire form, e.g. `-113,"Undefined header"`;
    /// `+0,"No error"` when there is none.
    std::string pop();

    std::size_t count() const { return m_entries.size(); }
    void clear() { m_entries.clear(); }

private:
    std::deque<ErrorCode> m_entries;
};

} // namespace scnsim
