#include "options.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace scnsim {

namespace {

constexpr std::uint16_t kUsualPort = 5025;
constexpr int kLastSlot = 99;
constexpr int kLastModuleType = 999;
constexpr double kHighestRate = 100000;
constexpr int kLowestBaud = 300;
constexpr int kHighestBaud = 4000000;

/// Reads the whole text as a number between the limits.
template <typename Number>
bool parseNumber(const std::string& text, Number minimum, Number maximum, Number& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number >= minimum && number <= maximum;
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
        }
    }
    return pieces;
}

bool parseTcp(const std::string& text, Options& options)
{
    std::uint16_t port = 0;
    if (!parseNumber<std::uint16_t>(text, 0, 65535, port)) {
        return false;
    }
    options.tcpPort = port;
    return true;
}

bool parseTerminal(const std::string& text, Options& options)
{
    options.terminalLink = text;
    return !text.empty();
}

bool parseBaud(const std::string& text, Options& options)
{
    return parseNumber(text, kLowestBaud, kHighestBaud, options.baud);
}

/// "1:1,2:8": slot and module type. An empty text is a mainframe without modules.
bool parseSlots(const std::string& text, Options& options)
{
    options.modules.clear();
    if (text.empty()) {
        return true;
    }
    for (const std::string& piece : split(text, ',')) {
        const std::vector<std::string> pair = split(piece, ':');
        int slot = 0;
        int type = 0;
        if (pair.size() != 2 || !parseNumber(pair[0], 1, kLastSlot, slot) ||
            !parseNumber(pair[1], 0, kLastModuleType, type) ||
            !options.modules.emplace(slot, type).second) {
            return false;
        }
    }
    return true;
}

/// Four fields, none of them empty, and no blanks: the serial number is found by its place.
bool parseIdentity(const std::string& text, Options& options)
{
    const std::vector<std::string> fields = split(text, ',');
    const bool plain =
        std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
    const bool complete = std::none_of(fields.begin(), fields.end(),
                                       [](const std::string& field) { return field.empty(); });
    options.identity = text;
    return plain && complete && fields.size() == 4;
}

bool parseRate(const std::string& text, Options& options)
{
    double rate = 0;
    if (!parseNumber(text, 0.001, kHighestRate, rate)) {
        return false;
    }
    options.readingsPerSecond = rate;
    return true;
}

bool parseSeed(const std::string& text, Options& options)
{
    return parseNumber<std::uint64_t>(text, 0, UINT64_MAX, options.seed);
}

bool parseOpenChannels(const std::string& text, Options& options)
{
    for (const std::string& piece : split(text, ',')) {
        int channel = 0;
        if (!parseNumber(piece, 101, kLastSlot * 100 + 99, channel)) {
            return false;
        }
        options.openChannels.insert(channel);
    }
    return true;
}

bool parseTranscript(const std::string& text, Options& options)
{
    options.transcriptPath = text;
    return !text.empty();
}

bool parseControl(const std::string& text, Options& options)
{
    std::uint16_t port = 0;
    if (!parseNumber<std::uint16_t>(text, 0, 65535, port)) {
        return false;
    }
    options.controlPort = port;
    return true;
}

bool parseFaultOption(const std::string& text, Options& options)
{
    Fault fault;
    std::string reason;
    if (!parseFault(text, fault, reason)) {
        return false;
    }
    options.faults.push_back(fault);
    return true;
}

/// Why a text is no fault.
std::string faultReason(const std::string& text)
{
    Fault fault;
    std::string reason;
    parseFault(text, fault, reason);
    return reason;
}

struct OptionRow
{
    const char* name;
    bool (*parse)(const std::string&, Options&);
    const char* wanted;
    /// Tells what is wrong with a value that was refused; null where it shows.
    std::string (*reason)(const std::string&) = nullptr;
};

constexpr OptionRow kOptions[] = {
    {"--tcp", parseTcp, "a port from 0 to 65535"},
    {"--pty", parseTerminal, "the path of a link"},
    {"--baud", parseBaud, "bits per second from 300 to 4000000"},
    {"--slots", parseSlots, "slot:module type,... with slots 1 to 99 and types 0 to 999"},
    {"--idn", parseIdentity, "four fields separated by commas, without blanks"},
    {"--rate", parseRate, "readings per second from 0.001 to 100000"},
    {"--seed", parseSeed, "a whole number from 0"},
    {"--open", parseOpenChannels, "channel numbers separated by commas"},
    {"--fault", parseFaultOption, "kind [value] [for pattern] [times count]", faultReason},
    {"--control", parseControl, "a port from 0 to 65535"},
    {"--transcript", parseTranscript, "the path of a file"},
};

const OptionRow* optionNamed(const std::string& name)
{
    for (const OptionRow& row : kOptions) {
        if (name == row.name) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

bool parseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error)
{
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        if (name == "--help") {
            options.help = true;
            continue;
        }
        const OptionRow* const row = optionNamed(name);
        if (row == nullptr) {
            error = "unknown option " + name;
            return false;
        }
        if (i + 1 == arguments.size()) {
            error = name + " wants " + row->wanted;
            return false;
        }
        const std::string& value = arguments[++i];
        if (!row->parse(value, options)) {
            error = name + " wants " + row->wanted + ", not \"" + value + "\"";
            if (row->reason != nullptr) {
                error += ": " + row->reason(value);
            }
            return false;
        }
    }
    if (!options.tcpPort && options.terminalLink.empty()) {
        options.tcpPort = kUsualPort;
    }
    return true;
}

const char* usageText()
{
    return "Usage: scn4070a-sim [options]\n"
           "A simulated SCN4070A. Prints \"READY <VISA resource>\" for each port when it serves.\n"
           "\n"
           "  --tcp PORT          serve on 127.0.0.1:PORT; 0 picks a free port\n"
           "  --pty LINK          serve on a pseudo-terminal behind the symbolic link LINK\n"
           "                      (with neither of the two: --tcp 5025)\n"
           "  --baud NUMBER       send on the pseudo-terminal at this many bits per second\n"
           "                      (as fast as it goes)\n"
           "  --slots LIST        modules as slot:type,... (1:1,2:2,3:8)\n"
           "  --idn TEXT          the identity, four fields without blanks\n"
           "                      (SCN,SCN4070A,MY00000042,01.02-sim)\n"
           "  --rate NUMBER       readings per second over all channels\n"
           "                      (as the settings of the channels ask for)\n"
           "  --seed NUMBER       the seed of all values (1)\n"
           "  --open CHANNELS     channels with nothing connected: they read as overload\n"
           "  --fault TEXT        misbehave: kind [value] [for pattern] [times count], for "
           "example\n"
           "                      \"delay 6000 for R? * times 1\"; may be given several times\n"
           "  --control PORT      take orders on 127.0.0.1:PORT; 0 picks a free port, and\n"
           "                      \"READY CONTROL 127.0.0.1:<port>\" tells it\n"
           "  --transcript FILE   write each line both ways to FILE\n"
           "  --help              show this text\n";
}

} // namespace scnsim
