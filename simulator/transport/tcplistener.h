#pragma once

#include "transport/descriptor.h"

#include <cstdint>
#include <string>

namespace scnsim {

/// Listens on a port of 127.0.0.1.
class TcpListener
{
public:
    /// @param port 0 picks a free one
    /// @return false with a text in error
    bool listen(std::uint16_t port, std::string& error);

    /// Stops listening, or listens again on the same port; does nothing before the first listen().
    /// A port that somebody else has taken meanwhile is tried again at the next call.
    void setOpen(bool open);

    /// The port that is listened on.
    std::uint16_t port() const { return m_port; }
    int descriptor() const { return m_descriptor.number(); }

    /// The next client's stream, non-blocking and without delay; none if it has gone already
    /// or no descriptor is free.
    Descriptor accept();

    /// Ends a connection in the way that its peer sees as a reset.
    static void reset(Descriptor stream);

private:
    Descriptor m_descriptor;
    std::uint16_t m_port = 0;
};

} // namespace scnsim
