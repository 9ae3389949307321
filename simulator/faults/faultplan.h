#pragma once

#include "faults/fault.h"

#include <optional>
#include <string>
#include <vector>

namespace scnsim {

/// The faults that are in force. Each has a number, counted from 1, under which it can be cleared.
class FaultPlan
{
public:
    /// @return the fault's number
    int add(const Fault& fault);

    /// @return false if there is no fault of this number
    bool remove(int number);

    void clear() { m_entries.clear(); }

    /// The oldest fault of this kind that acts on the line. It has acted once more then, and is
    /// gone if its count is used up.
    /// @param line a normalised line
    std::optional<Fault> take(FaultKind kind, const std::string& line);

    /// Whether a fault of this kind stands until it is cleared.
    bool standsFor(FaultKind kind) const;

    /// The faults, "1: silence for R? *; 3: drop times 2", with the counts that are left;
    /// empty for none.
    std::string list() const;

private:
    struct Entry
    {
        int number;
        Fault fault;
    };

    std::vector<Entry> m_entries;
    int m_lastNumber = 0;
};

} // namespace scnsim
