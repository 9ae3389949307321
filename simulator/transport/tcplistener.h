#pragma once

#include <cstdint>
#include <string>

#include "transport/descriptor.h"

namespace scnsim {

/// Listens on a port of 127.0.0.1.
class TcpListener
{
public:
    /// @param port 0 picks a free one
    /// @return false with a text in error
    bool listen(std::uint16_t port, std::string& error);

    /// The port that is listened on.
    std::uint16_t port() const { return m_port; }
    int descriptor() const { return m_descriptor.number(); }

    /// The next client's stream, non-blocking and without delay; none if it has gone already.
    Descriptor accept();

private:
    Descriptor m_descriptor;
    std::uint16_t m_port = 0;
};

} // namespace scnsim
