#pragma once

#include "visa/descriptortransport_posix.h"

namespace scn::visa {

/// A serial port, or a pseudo-terminal that stands for one, in raw mode: eight-bit clean, no flow
/// control, modem lines ignored.
class SerialTransport : public DescriptorTransport
{
public:
    using DescriptorTransport::DescriptorTransport;

    Result readSome(char* buffer, std::size_t size) override;
    Result writeSome(const char* bytes, std::size_t size) override;

    /// VI_ERROR_NSUP_ATTR_STATE for a value that the port does not take.
    ViStatus setSerialAttribute(ViAttr attribute, ViAttrState value) override;
};

/// Opens a port with the settings that the standard gives a new session: 9600 baud, 8 data bits, no
/// parity, one stop bit. VI_ERROR_RSRC_NFOUND for a file that is missing or no terminal.
OpenedTransport openSerialPort(const std::string& device);

} // namespace scn::visa
