#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scn::visa {

/// What a VISA resource string says, taken apart.
struct ResourceName
{
    enum class Kind { Serial, Socket };

    Kind kind = Kind::Serial;
    /// Serial: path of the port's device file.
    std::string device;
    /// Socket: host name or address (an IPv6 address without its brackets) and TCP port.
    std::string host;
    std::uint16_t port = 0;
};

/// Takes a resource string apart; nothing where it is none of these forms (upper and lower case of
/// the key words are equal):
///
///   ASRL<path>[::INSTR]              the serial port of that device file, an absolute path
///   ASRL<n>[::INSTR]                 serial port n from 1: /dev/ttyS<n - 1>
///   TCPIP[n]::<host>::<port>::SOCKET  a plain TCP connection; the board number n has no effect
///
/// A pure function: it looks at nothing but the text.
std::optional<ResourceName> parseResourceName(std::string_view text);

} // namespace scn::visa
