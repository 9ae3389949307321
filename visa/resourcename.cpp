#include "visa/resourcename.h"

#include <charconv>

namespace scn::visa {
namespace {

constexpr std::string_view kSeparator = "::";
constexpr unsigned kHighestSerialPort = 9999;
constexpr unsigned kHighestTcpPort = 65535;
constexpr unsigned kHighestUsbId = 0xFFFF;
constexpr unsigned kHighestUsbInterface = 0xFF;

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lowered(a[i]) != lowered(b[i])) {
            return false;
        }
    }
    return true;
}

bool removePrefix(std::string_view& text, std::string_view prefix)
{
    if (!equalIgnoringCase(text.substr(0, prefix.size()), prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

bool removeSuffix(std::string_view& text, std::string_view suffix)
{
    if (text.size() < suffix.size() ||
        !equalIgnoringCase(text.substr(text.size() - suffix.size()), suffix)) {
        return false;
    }
    text.remove_suffix(suffix.size());
    return true;
}

bool allDigits(std::string_view text)
{
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// A number of digits only, up to `highest`; nothing for any other text.
std::optional<unsigned> digitsUpTo(std::string_view text, int base, unsigned highest)
{
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    const std::string_view allowed = base == 16 ? kDigits : kDigits.substr(0, 10);
    unsigned number = 0;
    if (text.empty() || text.find_first_not_of(allowed) != std::string_view::npos) {
        return std::nullopt;
    }
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return result.ec == std::errc() && number <= highest ? std::optional(number) : std::nullopt;
}

/// A decimal number from 1 to `highest`; 0 for any other text.
unsigned numberUpTo(std::string_view text, unsigned highest)
{
    return digitsUpTo(text, 10, highest).value_or(0);
}

/// A decimal number or a hexadecimal one behind "0x", from 0 to `highest`.
std::optional<unsigned> usbNumber(std::string_view text, unsigned highest)
{
    const int base = removePrefix(text, "0x") ? 16 : 10;
    return digitsUpTo(text, base, highest);
}

bool hasControlCharacter(std::string_view text)
{
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            return true;
        }
    }
    return false;
}

/// Parses what follows "ASRL".
std::optional<ResourceName> parseSerial(std::string_view rest)
{
    removeSuffix(rest, "::INSTR");
    ResourceName name;
    name.kind = ResourceName::Kind::Serial;
    if (!rest.empty() && rest.front() == '/') {
        if (rest.size() == 1 || rest.find(kSeparator) != std::string_view::npos) {
            return std::nullopt;
        }
        name.device = std::string(rest);
        return name;
    }
    const unsigned port = numberUpTo(rest, kHighestSerialPort);
    if (port == 0) {
        return std::nullopt;
    }
    name.device = "/dev/ttyS" + std::to_string(port - 1);
    return name;
}

/// Removes the brackets of an IPv6 address. False if the host is unusable.
bool cleanHost(std::string_view& host)
{
    if (!host.empty() && host.front() == '[') {
        if (host.size() < 3 || host.back() != ']') {
            return false;
        }
        host = host.substr(1, host.size() - 2);
        return host.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
    }
    return !host.empty() && host.find_first_of("[]: ") == std::string_view::npos;
}

/// Cuts the text before the first separator off. Nothing if there is no separator.
std::optional<std::string_view> takePart(std::string_view& rest)
{
    const std::size_t end = rest.find(kSeparator);
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end + kSeparator.size());
    return part;
}

/// Parses what follows "TCPIP".
std::optional<ResourceName> parseSocket(std::string_view rest)
{
    const auto board = takePart(rest);
    if (!board || !allDigits(*board) || !removeSuffix(rest, "::SOCKET")) {
        return std::nullopt;
    }
    const std::size_t hostEnd = rest.rfind(kSeparator);
    if (hostEnd == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view host = rest.substr(0, hostEnd);
    const unsigned port = numberUpTo(rest.substr(hostEnd + kSeparator.size()), kHighestTcpPort);
    if (port == 0 || !cleanHost(host)) {
        return std::nullopt;
    }
    ResourceName name;
    name.kind = ResourceName::Kind::Socket;
    name.host = std::string(host);
    name.port = static_cast<std::uint16_t>(port);
    return name;
}

/// Parses what follows "USB".
std::optional<ResourceName> parseUsb(std::string_view rest)
{
    removeSuffix(rest, "::INSTR");
    const auto board = takePart(rest);
    const auto vendor = usbNumber(takePart(rest).value_or(""), kHighestUsbId);
    const auto product = usbNumber(takePart(rest).value_or(""), kHighestUsbId);
    std::optional<unsigned> usbInterface = 0;
    if (const auto end = rest.rfind(kSeparator); end != std::string_view::npos) {
        usbInterface = usbNumber(rest.substr(end + kSeparator.size()), kHighestUsbInterface);
        rest = rest.substr(0, end);
    }
    if (!board || !allDigits(*board) || !vendor || !product || !usbInterface || rest.empty() ||
        rest.find(kSeparator) != std::string_view::npos) {
        return std::nullopt;
    }
    ResourceName name;
    name.kind = ResourceName::Kind::Usb;
    name.vendor = static_cast<std::uint16_t>(*vendor);
    name.product = static_cast<std::uint16_t>(*product);
    name.serialNumber = std::string(rest);
    name.usbInterface = static_cast<std::uint8_t>(*usbInterface);
    return name;
}

} // namespace

std::optional<ResourceName> parseResourceName(std::string_view text)
{
    if (hasControlCharacter(text)) {
        return std::nullopt;
    }
    if (removePrefix(text, "ASRL")) {
        return parseSerial(text);
    }
    if (removePrefix(text, "TCPIP")) {
        return parseSocket(text);
    }
    if (removePrefix(text, "USB")) {
        return parseUsb(text);
    }
    return std::nullopt;
}

} // namespace scn::visa
