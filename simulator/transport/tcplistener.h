#pragma once

#include "posix/filedescriptor.h"

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
    /// If another program has taken the port, the next call tries again.
    void setOpen(bool open);

    /// The port it listens on.
    std::uint16_t port() const { return m_port; }
    int descriptor() const { return m_descriptor.get(); }

    /// The next client's stream, non-blocking and without Nagle's delay; none if the client has
    /// gone or no descriptor is free.
    scn::FileDescriptor accept();

    /// Closes a connection so that its peer sees a reset.
    static void reset(scn::FileDescriptor stream);

private:
    scn::FileDescriptor m_descriptor;
    std::uint16_t m_port = 0;
};

} // namespace scnsim
