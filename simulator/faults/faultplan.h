#pragma once

#include "faults/fault.h"

#include <optional>
#include <string>
#include <vector>

namespace scnsim {

/// The active faults. Each has a number, counted from 1, by which it can be cleared.
class FaultPlan
{
public:
    /// @return the fault's number
    int add(const Fault& fault);

    /// @return false if there is no fault of this number
    bool remove(int number);

    void clear() { m_entries.clear(); }

    /// The oldest fault of this kind that acts on the line. It counts as used once more, and is
    /// removed when its count is used up.
    /// @param line a normalised line
    std::optional<Fault> take(FaultKind kind, const std::string& line);

    /// Whether a fault of this kind is active until cleared.
    bool standsFor(FaultKind kind) const;

    /// The active faults with their remaining counts, "1: silence for R? *; 3: drop times 2"; empty
    /// for none.
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
