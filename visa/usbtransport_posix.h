#pragma once

#include "visa/transport.h"
#include "visa/usbtransfer_posix.h"

#include <filesystem>
#include <mutex>
#include <string>

namespace scn::visa {

/// The messages of a USB instrument as a session reads and writes them.
class UsbTransport : public Transport
{
public:
    UsbTransport(std::unique_ptr<UsbDevice> device, WakePipe wakePipe);

    /// Hands over what the last wait has brought.
    Result readSome(char* buffer, std::size_t size) override;
    /// The next wait sends these bytes as one message.
    Result writeSome(const char* bytes, std::size_t size) override;
    Wait wait(Direction direction, const Deadline& deadline) override;
    void interrupt() override;
    ViStatus setSerialAttribute(ViAttr attribute, ViAttrState value) override;

private:
    struct Step
    {
        bool isReady = false;
        /// The caller has begun the transfer.
        bool isOurs = false;
        std::shared_ptr<UsbTransfer> transfer;
    };

    Step nextStep(Direction direction, const Deadline& deadline);
    bool claim(const UsbTransfer& transfer);
    void collect();

    const std::shared_ptr<UsbLine> m_line;
    WakePipe m_wakePipe;
    /// Guards everything below; never held during a wait.
    std::mutex m_mutex;
    /// The transfer that runs, or whose result nobody has looked at yet.
    std::shared_ptr<UsbTransfer> m_transfer;
    /// What the session is told once.
    State m_inputState = State::Nothing;
    State m_outputState = State::Nothing;
    std::string m_received;
    /// The bytes received are the last of their message.
    bool m_endsMessage = false;
    std::string m_message;
};

/// Opens the device file of a USB instrument. `root` is the root of the file system.
/// VI_ERROR_RSRC_NFOUND if no such instrument is plugged in.
OpenedTransport openUsbInstrument(const ResourceName& name,
                                  const std::filesystem::path& root = "/");

} // namespace scn::visa
