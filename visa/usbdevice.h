#pragma once

#include <chrono>
#include <cstddef>

namespace scn::visa {

/// The messages of a USB instrument. Every operation may block; one is called at a time, on any
/// thread.
class UsbDevice
{
public:
    enum class Outcome {
        Done,
        TimedOut,
        Lost,  ///< the instrument has been unplugged
        Failed ///< another error of the operating system
    };

    struct Reception
    {
        Outcome outcome = Outcome::Done;
        std::size_t count = 0;
        /// The bytes are the last of their message.
        bool endsMessage = false;
    };

    UsbDevice() = default;
    virtual ~UsbDevice() = default;
    UsbDevice(const UsbDevice&) = delete;
    UsbDevice& operator=(const UsbDevice&) = delete;

    /// How long each of the others may take from now on.
    virtual void setTimeout(std::chrono::milliseconds timeout) = 0;

    /// Asks for a message, or for the next part of one.
    virtual Reception receive(char* buffer, std::size_t size) = 0;

    /// Sends one whole message.
    virtual Outcome send(const char* bytes, std::size_t size) = 0;

    /// Makes the instrument forget what it has not read or not sent yet.
    virtual void clear() = 0;
};

} // namespace scn::visa
