#include "model/readingmemory.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace scnsim {

void ReadingMemory::store(MemoryReading reading)
{
    if (m_readings.size() == m_capacity) {
        m_readings.pop_front();
        if (m_loss == Loss::Nothing) {
            m_loss = Loss::Unreported;
        }
    }
    m_readings.push_back(std::move(reading));
}

std::vector<MemoryReading> ReadingMemory::take(std::size_t count)
{
    const auto end = std::next(m_readings.begin(),
                               static_cast<std::ptrdiff_t>(std::min(count, m_readings.size())));
    std::vector<MemoryReading> taken(std::make_move_iterator(m_readings.begin()),
                                     std::make_move_iterator(end));
    m_readings.erase(m_readings.begin(), end);
    if (m_loss == Loss::Reported && !taken.empty()) {
        m_loss = Loss::Nothing;
    }
    return taken;
}

void ReadingMemory::clear()
{
    m_readings.clear();
    m_loss = Loss::Nothing;
}

bool ReadingMemory::takeLossNotice()
{
    if (m_loss != Loss::Unreported) {
        return false;
    }
    m_loss = Loss::Reported;
    return true;
}

} // namespace scnsim
