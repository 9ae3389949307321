#include "transport/descriptor.h"

#include <unistd.h>

#include <utility>

namespace scnsim {

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(m_number, other.m_number);
    return *this;
}

Descriptor::~Descriptor()
{
    if (m_number >= 0) {
        close(m_number);
    }
}

int Descriptor::release()
{
    return std::exchange(m_number, -1);
}

} // namespace scnsim
