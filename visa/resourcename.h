#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scn::visa {

/// The parts of a VISA resource string.
struct ResourceName
{
    enum class Kind { Serial, Socket, Usb };

    Kind kind = Kind::Serial;
    /// Serial: path of the port's device file.
    std::string device;
    /// Socket: host name or address (an IPv6 address without its brackets) and TCP port.
    std::string host;
    std::uint16_t port = 0;
    /// USB: what the instrument says of itself, and which of its interfaces.
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string serialNumber;
    std::uint8_t usbInterface = 0;
};

/// Parses a resource string; empty unless it has one of these forms (key words in either case):
///
///   ASRL<path>[::INSTR]              the serial port of that device file, an absolute path
///   ASRL<n>[::INSTR]                 serial port n from 1: /dev/ttyS<n - 1>
///   TCPIP[n]::<host>::<port>::SOCKET  a plain TCP connection; the board number n is ignored
///   USB[n]::<vendor>::<product>::<serial number>[::<interface>][::INSTR]
///                                    a USB instrument; numbers are decimal, or hexadecimal behind
///                                    0x; the interface is 0 by default, and n is ignored
///
/// A pure function of the text.
std::optional<ResourceName> parseResourceName(std::string_view text);

} // namespace scn::visa
