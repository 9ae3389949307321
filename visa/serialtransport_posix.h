#pragma once

#include "visa/descriptortransport_posix.h"

namespace scn::visa {

/// A serial port or a pseudo-terminal, in raw mode: eight-bit clean, no flow
/// control, modem lines ignored.
class SerialTransport : public DescriptorTransport
{
public:
    using DescriptorTransport::DescriptorTransport;

    Result readSome(char* buffer, std::size_t size) override;
    Result writeSome(const char* bytes, std::size_t size) override;

    /// VI_ERROR_NSUP_ATTR_STATE for a value that the port does not support. A rate in the environment variable
    /// SCN4070A_SERIAL_RATE takes the place of the one that is set; what is not a rate there counts for nothing.
    ViStatus setSerialAttribute(ViAttr attribute, ViAttrState value) override;
};

/// Whether a port can be told this rate, in baud.
bool isSerialRate(int baud);

/// Opens a port with the settings that the standard gives a new session: 9600 baud, 8 data bits, no
/// parity, one stop bit. VI_ERROR_RSRC_NFOUND if the file is missing or is not a terminal.
OpenedTransport openSerialPort(const std::string& device);

} // namespace scn::visa
