#include "faults/faultplan.h"

#include <algorithm>

namespace scnsim {

int FaultPlan::add(const Fault& fault)
{
    m_entries.push_back({++m_lastNumber, fault});
    return m_lastNumber;
}

bool FaultPlan::remove(int number)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [number](const Entry& e) { return e.number == number; });
    if (found == m_entries.end()) {
        return false;
    }
    m_entries.erase(found);
    return true;
}

std::optional<Fault> FaultPlan::take(FaultKind kind, const std::string& line)
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [kind, &line](const Entry& e) {
            return e.fault.kind == kind && matchesPattern(e.fault.pattern, line);
        });
    if (found == m_entries.end()) {
        return std::nullopt;
    }
    Fault& fault = found->fault;
    const Fault taken = fault;
    if (fault.count && --*fault.count == 0) {
        m_entries.erase(found);
    }
    return taken;
}

bool FaultPlan::standsFor(FaultKind kind) const
{
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [kind](const Entry& e) { return e.fault.kind == kind && !e.fault.count; });
}

std::string FaultPlan::list() const
{
    std::string text;
    for (const Entry& entry : m_entries) {
        text += (text.empty() ? "" : "; ") + std::to_string(entry.number) + ": " +
                faultText(entry.fault);
    }
    return text;
}

} // namespace scnsim
