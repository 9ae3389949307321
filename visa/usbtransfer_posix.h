#pragma once

#include "posix/wakepipe.h"
#include "visa/usbdevice.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

namespace scn::visa {

/// A USB instrument and what its transfers have left in it. Transfers share it, one after the other.
struct UsbLine
{
    std::unique_ptr<UsbDevice> device;
    /// A message in either direction has been begun and not ended.
    bool isMidMessage = false;
};

/// One transfer to or from a USB instrument, on a thread of its own: the driver's calls cannot be
/// interrupted, so whoever no longer wants the result leaves the transfer alone, and it ends with its
/// time-out. A message is sent to an instrument that has forgotten any half message before.
class UsbTransfer
{
public:
    /// Begins to send a message; null where the system has no resources left.
    static std::shared_ptr<UsbTransfer> send(std::shared_ptr<UsbLine> line, std::string message,
                                             std::chrono::milliseconds timeout);
    /// Begins to receive a message or a part of one; null as above.
    static std::shared_ptr<UsbTransfer> receive(std::shared_ptr<UsbLine> line,
                                                std::chrono::milliseconds timeout);

    bool isReceiving() const { return m_isReceiving; }

    /// Becomes readable with the end of the transfer, and stays so.
    int endDescriptor() const { return m_end.readEnd(); }
    bool isOver() const { return m_isOver; }

    /// How it ended; for a transfer that is over.
    UsbDevice::Outcome outcome() const { return m_outcome; }
    bool endsMessage() const { return m_endsMessage; }
    /// What came in.
    std::string takeBytes();

private:
    UsbTransfer(bool isReceiving, std::string bytes);

    static std::shared_ptr<UsbTransfer> start(std::shared_ptr<UsbTransfer> transfer,
                                              std::shared_ptr<UsbLine> line,
                                              std::chrono::milliseconds timeout);
    void run(UsbLine& line, std::chrono::milliseconds timeout);
    void runSend(UsbLine& line);
    void runReceive(UsbLine& line);

    const bool m_isReceiving;
    std::string m_bytes;
    UsbDevice::Outcome m_outcome = UsbDevice::Outcome::Failed;
    bool m_endsMessage = false;
    std::atomic<bool> m_isOver{false};
    WakePipe m_end;
};

} // namespace scn::visa
