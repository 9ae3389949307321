#pragma once

#include "visa/deadline.h"
#include "visa/resourcename.h"
#include "visa/visatypes.h"

#include <cstddef>
#include <memory>

namespace scn::visa {

/// The bytes of one connection, in both directions, without any notion of a message. Moving bytes
/// never blocks; wait() is the only place where a thread stands still. All operations may be
/// called on any thread; two threads must not read, or write, at the same time.
class Transport
{
public:
    enum class State {
        Moved,   ///< at least one byte was moved
        Nothing, ///< nothing can be moved now
        Lost,    ///< the other side has gone; no byte will come or go any more
        Failed   ///< the operating system refused for another reason
    };

    struct Result
    {
        State state = State::Nothing;
        std::size_t count = 0;
    };

    enum class Direction { Input, Output, Neither };

    enum class Wait {
        Ready,       ///< it is worth trying to move bytes
        HungUp,      ///< the other side has gone; what it sent may still be waiting
        TimedOut,    ///< the deadline has passed
        Interrupted, ///< interrupt() was called
        Failed       ///< the operating system refused
    };

    Transport() = default;
    virtual ~Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    virtual Result readSome(char* buffer, std::size_t size) = 0;
    virtual Result writeSome(const char* bytes, std::size_t size) = 0;

    /// Blocks until the direction is worth a try, the deadline passes or interrupt() is called.
    virtual Wait wait(Direction direction, const Deadline& deadline) = 0;

    /// Ends every wait, those going on and those to come.
    virtual void interrupt() = 0;

    /// Sets one of the VI_ATTR_ASRL_... attributes; VI_ERROR_NSUP_ATTR on what is no serial port.
    virtual ViStatus setSerialAttribute(ViAttr attribute, ViAttrState value) = 0;
};

struct OpenedTransport
{
    ViStatus status = VI_SUCCESS;
    /// Null unless the status is VI_SUCCESS.
    std::unique_ptr<Transport> transport;
};

/// Opens the connection that the name tells, by the deadline at the latest. The one function that
/// a port to another operating system has to supply, with its transports: on Windows overlapped
/// ReadFile/WriteFile on a COM handle and a WSA socket, each waited for together with an event
/// that interrupt() sets.
OpenedTransport openTransport(const ResourceName& name, const Deadline& deadline);

} // namespace scn::visa
