#include "options.h"

#include "model/channelnumber.h"
#include "scpi/pieces.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace scnsim {

namespace {

constexpr std::uint16_t kUsualPort = 5025;
constexpr int kLastModuleType = 999;
constexpr double kHighestRate = 100000;
constexpr int kLowestBaud = 300;
constexpr int kHighestBaud = 4000000;

/// Parses the whole text as a number between the limits.
template <typename Number>
bool parseNumber(const std::string& text, Number minimum, Number maximum, Number& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end && number >= minimum && number <= maximum;
}

bool parsePort(const std::string& text, std::optional<std::uint16_t>& port)
{
    std::uint16_t number = 0;
    if (!parseNumber<std::uint16_t>(text, 0, 65535, number)) {
        return false;
    }
    port = number;
    return true;
}

bool parseTcp(const std::string& text, SimulatorOptions& options)
{
    return parsePort(text, options.tcpPort);
}

bool parseTerminal(const std::string& text, SimulatorOptions& options)
{
    options.terminalLink = text;
    return !text.empty();
}

bool parseBaud(const std::string& text, SimulatorOptions& options)
{
    return parseNumber(text, kLowestBaud, kHighestBaud, options.baud);
}

/// "1:1,2:8": slot and module type. Empty: a mainframe without modules.
bool parseSlots(const std::string& text, SimulatorOptions& options)
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

/// Four non-empty fields and no blanks: clients find the serial number by its position.
bool parseIdentity(const std::string& text, SimulatorOptions& options)
{
    const std::vector<std::string> fields = split(text, ',');
    const bool plain =
        std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
    const bool complete = std::none_of(fields.begin(), fields.end(),
                                       [](const std::string& field) { return field.empty(); });
    options.identity = text;
    return plain && complete && fields.size() == 4;
}

bool parseRate(const std::string& text, SimulatorOptions& options)
{
    double rate = 0;
    if (!parseNumber(text, 0.001, kHighestRate, rate)) {
        return false;
    }
    options.readingsPerSecond = rate;
    return true;
}

bool parseSeed(const std::string& text, SimulatorOptions& options)
{
    return parseNumber<std::uint64_t>(text, 0, UINT64_MAX, options.seed);
}

bool parseOpenChannels(const std::string& text, SimulatorOptions& options)
{
    for (const std::string& piece : split(text, ',')) {
        int channel = 0;
        if (!parseNumber(piece, channelAt(1, 1), kLastChannel, channel)) {
            return false;
        }
        options.openChannels.insert(channel);
    }
    return true;
}

bool parseTranscript(const std::string& text, SimulatorOptions& options)
{
    options.transcriptPath = text;
    return !text.empty();
}

bool parseControl(const std::string& text, SimulatorOptions& options)
{
    return parsePort(text, options.controlPort);
}

bool parseFaultOption(const std::string& text, SimulatorOptions& options)
{
    Fault fault;
    std::string reason;
    if (!parseFault(text, fault, reason)) {
        return false;
    }
    options.faults.push_back(fault);
    return true;
}

/// Why a text is not a valid fault.
std::string faultReason(const std::string& text)
{
    Fault fault;
    std::string reason;
    parseFault(text, fault, reason);
    return reason;
}

/// Everything about one option.
struct CommandLineOption
{
    const char* name;
    const char* value;
    const char* help;
    const char* wanted;
    bool (*parse)(const std::string&, SimulatorOptions&);
    /// Says what is wrong with a refused value; null where it shows.
    std::string (*reason)(const std::string&) = nullptr;
};

constexpr CommandLineOption kOptions[] = {
    {"--tcp", "PORT", "serve on 127.0.0.1:PORT; 0 picks a free port", "a port from 0 to 65535",
     parseTcp},
    {"--pty", "LINK",
     "serve on a pseudo-terminal behind the symbolic link LINK\n(with neither of the two: --tcp "
     "5025)",
     "the path of a link", parseTerminal},
    {"--baud", "NUMBER",
     "send on the pseudo-terminal at this many bits per second\n(as fast as it goes)",
     "bits per second from 300 to 4000000", parseBaud},
    {"--slots", "LIST", "modules as slot:type,... (1:1,2:2,3:8)",
     "slot:module type,... with slots 1 to 99 and types 0 to 999", parseSlots},
    {"--idn", "TEXT",
     "the identity, four fields without blanks\n(SCN,SCN4070A,MY00000042,01.02-sim)",
     "four fields separated by commas, without blanks", parseIdentity},
    {"--rate", "NUMBER",
     "readings per second over all channels\n(as the settings of the channels ask for)",
     "readings per second from 0.001 to 100000", parseRate},
    {"--seed", "NUMBER", "the seed of all values (1)", "a whole number from 0", parseSeed},
    {"--open", "CHANNELS", "channels with nothing connected: they read as overload",
     "channel numbers separated by commas", parseOpenChannels},
    {"--fault", "TEXT",
     "misbehave: kind [value] [for pattern] [times count], for\nexample \"delay 6000 for R? * "
     "times "
     "1\"; may be given several times",
     "kind [value] [for pattern] [times count]", parseFaultOption, faultReason},
    {"--control", "PORT",
     "take orders on 127.0.0.1:PORT; 0 picks a free port, and\n\"READY CONTROL "
     "127.0.0.1:<port>\" tells it",
     "a port from 0 to 65535", parseControl},
    {"--transcript", "FILE", "write each line both ways to FILE", "the path of a file",
     parseTranscript},
};

constexpr std::size_t kHelpColumn = 22;

std::string wantedText(const CommandLineOption& row)
{
    return std::string(row.name) + " wants " + row.wanted;
}

void parseValue(const CommandLineOption& row, const std::string& value, SimulatorOptions& options)
{
    if (row.parse(value, options)) {
        return;
    }
    std::string message = wantedText(row) + ", not \"" + value + '"';
    if (row.reason != nullptr) {
        message += ": " + row.reason(value);
    }
    throw CLI::ParseError(message, CLI::ExitCodes::ValidationError);
}

/// Binds the option table to the library. Keeps a reference to the options.
class CommandLine
{
public:
    explicit CommandLine(SimulatorOptions& options)
        : m_app("A simulated SCN4070A. Prints \"READY <VISA resource>\" for each port when it "
                "serves.",
                "scn4070a-sim")
    {
        m_app.set_help_flag();
        m_app.allow_extras();
        m_app.get_formatter()->column_width(kHelpColumn);
        for (const CommandLineOption& row : kOptions) {
            const auto take = [&row, &options](const CLI::results_t& values) {
                for (const std::string& value : values) {
                    parseValue(row, value, options);
                }
                return true;
            };
            m_app.add_option(row.name, take, row.help)->option_text(row.value)->take_all();
        }
        m_app.add_flag("--help", options.help, "show this text");
    }

    void parse(const std::vector<std::string>& arguments)
    {
        // The library reads the arguments from the back.
        m_app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        const std::vector<std::string> unknown = m_app.remaining();
        if (!unknown.empty()) {
            throw CLI::ParseError("unknown option " + unknown.front(), CLI::ExitCodes::ExtrasError);
        }
    }

    std::string help() const { return m_app.help(); }

private:
    CLI::App m_app;
};

/// Only the last argument can lack its value: "--tcp", or "--tcp=".
std::string missingValueText(const std::string& argument)
{
    const std::string name = split(argument, '=').front();
    const auto* const row =
        std::find_if(std::begin(kOptions), std::end(kOptions),
                     [&](const CommandLineOption& r) { return name == r.name; });
    return row == std::end(kOptions) ? argument : wantedText(*row);
}

} // namespace

bool parseOptions(const std::vector<std::string>& arguments, SimulatorOptions& options,
                  std::string& error)
{
    try {
        CommandLine(options).parse(arguments);
    } catch (const CLI::ArgumentMismatch&) {
        error = missingValueText(arguments.back());
        return false;
    } catch (const CLI::ParseError& refusal) {
        error = refusal.what();
        return false;
    }
    if (!options.tcpPort && options.terminalLink.empty()) {
        options.tcpPort = kUsualPort;
    }
    return true;
}

std::string usageText()
{
    SimulatorOptions options;
    return CommandLine(options).help();
}

} // namespace scnsim
