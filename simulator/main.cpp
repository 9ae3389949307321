#include "dialogue/dialogue.h"
#include "options.h"
#include "service/controlservice.h"
#include "service/instrumentservice.h"
#include "transport/server.h"
#include "transport/stopsignal.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace {

using namespace scnsim;

constexpr int kBadOptions = 2;
constexpr int kCannotServe = 1;

/// The instrument's clock starts at this computer's local time and runs on its own from there.
DateTime localTimeNow()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(now.time_since_epoch());
    return dateTime(*std::localtime(&seconds), static_cast<int>(sinceEpoch.count() % 1000));
}

InstrumentSetup setupFrom(const SimulatorOptions& options)
{
    InstrumentSetup setup;
    setup.modules = options.modules;
    setup.seed = options.seed;
    setup.readingsPerSecond = options.readingsPerSecond;
    setup.openChannels = options.openChannels;
    setup.powerOnTime = localTimeNow();
    return setup;
}

int fail(const std::string& error, int code)
{
    std::fprintf(stderr, "scn4070a-sim: %s\n", error.c_str());
    return code;
}

bool openPorts(Server& server, ControlService& control, const SimulatorOptions& options,
               std::string& error)
{
    return (!options.tcpPort || server.listenTcp(*options.tcpPort, error)) &&
           (options.terminalLink.empty() ||
            server.openPseudoTerminal(options.terminalLink, options.baud, error)) &&
           (!options.controlPort || server.listenControl(control, *options.controlPort, error));
}

void tellPorts(const Server& server, const SimulatorOptions& options)
{
    for (const std::string& resource : server.resources()) {
        std::printf("READY %s\n", resource.c_str());
    }
    if (options.controlPort) {
        std::printf("READY CONTROL 127.0.0.1:%d\n", server.controlPort());
    }
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    SimulatorOptions options;
    std::string error;
    if (!parseOptions(std::vector<std::string>(argv + 1, argv + argc), options, error)) {
        return fail(error, kBadOptions);
    }
    if (options.help) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    Transcript transcript;
    if (!options.transcriptPath.empty() && !transcript.open(options.transcriptPath)) {
        return fail("cannot write " + options.transcriptPath, kCannotServe);
    }
    const auto powerOn = std::chrono::steady_clock::now();
    const auto sincePowerOn = [powerOn]() -> Instant {
        return std::chrono::steady_clock::now() - powerOn;
    };
    Instrument instrument(setupFrom(options));
    Dialogue dialogue(instrument, options.identity);
    FaultPlan faults;
    for (const Fault& fault : options.faults) {
        faults.add(fault);
    }
    InstrumentService service(instrument, dialogue, faults, sincePowerOn, options.seed);
    ControlService control(instrument, faults, sincePowerOn);
    Server server(service, transcript);
    if (!stopsignal::install() || !openPorts(server, control, options, error)) {
        return fail(error.empty() ? "cannot catch signals" : error, kCannotServe);
    }
    tellPorts(server, options);
    server.run(stopsignal::descriptor());
    return 0;
}
