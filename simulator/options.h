#pragma once

#include "faults/fault.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace scnsim {

/// What the command line asks for.
struct Options
{
    bool help = false;
    /// None: no TCP port. With neither a port nor a pseudo-terminal asked for it is the usual
    /// port of instruments.
    std::optional<std::uint16_t> tcpPort;
    std::string terminalLink;
    /// The speed of the pseudo-terminal in bits per second; 0: as fast as it goes.
    int baud = 0;
    std::map<int, int> modules = {{1, 1}, {2, 2}, {3, 8}};
    std::string identity = "SCN,SCN4070A,MY00000042,01.02-sim";
    std::optional<double> readingsPerSecond;
    std::uint64_t seed = 1;
    std::set<int> openChannels;
    std::string transcriptPath;
    /// None: no control port.
    std::optional<std::uint16_t> controlPort;
    std::vector<Fault> faults;
};

/// Reads the arguments behind the program's name.
/// @return false with a text in error
bool parseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error);

/// The text for --help.
std::string usageText();

} // namespace scnsim
