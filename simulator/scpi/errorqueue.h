#pragma once

#include "scpi/errors.h"

#include <cstddef>
#include <deque>
#include <string>

namespace scnsim {

/// The bounded first-in, first-out error queue. When it is full, -350 "Queue overflow" replaces the
/// newest entry and later errors are lost, as the SCPI standard requires.
class ErrorQueue
{
public:
    static constexpr std::size_t kCapacity = 20;

    void push(ErrorCode code);

    /// Removes the oldest entry and returns it as it goes on the wire, e.g. `-113,"Undefined
    /// header"`; `+0,"No error"` when empty.
    std::string pop();

    std::size_t count() const { return m_entries.size(); }
    void clear() { m_entries.clear(); }

private:
    std::deque<ErrorCode> m_entries;
};

} // namespace scnsim
