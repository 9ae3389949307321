#include "visa/resourcename.h"

#include <charconv>

namespace scn::visa {
namespace {

constexpr std::string_view kSeparator = "::";
constexpr unsigned kHighestSerialPort = 9999;
constexpr unsigned kHighestTcpPort = 65535;

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

/// A decimal number from 1 to `highest`, digits only; 0 for any other text.
unsigned numberUpTo(std::string_view text, unsigned highest)
{
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    if (text.empty() || !allDigits(text)) {
        return 0;
    }
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number <= highest ? number : 0;
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

/// Parses what follows "TCPIP".
std::optional<ResourceName> parseSocket(std::string_view rest)
{
    const std::size_t boardEnd = rest.find(kSeparator);
    if (boardEnd == std::string_view::npos || !allDigits(rest.substr(0, boardEnd))) {
        return std::nullopt;
    }
    rest.remove_prefix(boardEnd + kSeparator.size());
    if (!removeSuffix(rest, "::SOCKET")) {
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
    return std::nullopt;
}

} // namespace scn::visa
