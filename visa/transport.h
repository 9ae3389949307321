#pragma once

#include "visa/deadline.h"
#include "visa/resourcename.h"
#include "visa/visatypes.h"

#include <cstddef>
#include <memory>

namespace scn::visa {

/// The byte streams of one connection. Reading and writing never block; only wait() does. Any thread may call any operation, but two threads must not read, or
/// write, at the same time.
class Transport
{
public:
    enum class State {
        Moved,   ///< at least one byte was transferred
        Nothing, ///< nothing can be transferred now
        Lost,    ///< the other side has gone for good
        Failed   ///< another error of the operating system
    };

    struct Result
    {
        State state = State::Nothing;
        std::size_t count = 0;
        /// The bytes read are the last of a message; a plain stream of bytes never tells.
        bool endsMessage = false;
    };

    enum class Direction { Input, Output, Neither };

    enum class Wait {
        Ready,       ///< a transfer is worth trying
        HungUp,      ///< the other side has gone; its last bytes may still be pending
        TimedOut,    ///< the deadline has passed
        Interrupted, ///< interrupt() was called
        Failed       ///< an error of the operating system
    };

    Transport() = default;
    virtual ~Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    virtual Result readSome(char* buffer, std::size_t size) = 0;
    virtual Result writeSome(const char* bytes, std::size_t size) = 0;

    /// Blocks until a transfer is worth trying, the deadline passes or interrupt() is called.
    virtual Wait wait(Direction direction, const Deadline& deadline) = 0;

    /// Ends every wait, current and future.
    virtual void interrupt() = 0;

    /// Sets one of the VI_ATTR_ASRL_... attributes; VI_ERROR_NSUP_ATTR if this is not a serial
    /// port.
    virtual ViStatus setSerialAttribute(ViAttr attribute, ViAttrState value) = 0;
};

struct OpenedTransport
{
    ViStatus status = VI_SUCCESS;
    /// Null unless the status is VI_SUCCESS.
    std::unique_ptr<Transport> transport;
};

/// Opens the connection described by `name` before the deadline. A port to another operating system
/// supplies this function and its transports: on Windows, overlapped ReadFile/WriteFile on a COM
/// handle, and a WSA socket, each awaited together with an event that interrupt() sets.
OpenedTransport openTransport(const ResourceName& name, const Deadline& deadline);

} // namespace scn::visa
