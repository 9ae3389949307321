#pragma once

#include "faults/fault.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace scnsim {

/// The settings from the command line.
struct SimulatorOptions
{
    bool help = false;
    /// None: no TCP port. Without a port and a pseudo-terminal it is the instruments' usual port.
    std::optional<std::uint16_t> tcpPort;
    std::string terminalLink;
    /// Speed of the pseudo-terminal in bits per second; 0: unlimited.
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

/// Parses the arguments that follow the program's name.
/// @return false with a text in error
bool parseOptions(const std::vector<std::string>& arguments, SimulatorOptions& options,
                  std::string& error);

/// The text for --help.
std::string usageText();

} // namespace scnsim
