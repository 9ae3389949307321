#include "check.h"
#include "service/controlservice.h"
#include "service/instrumentservice.h"
#include "transport/linebuffer.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace scnsim;
using namespace std::chrono_literals;

/// Longer replies are cut: a fault may ask for ten megabytes.
constexpr std::size_t kLongestReply = 20000000;

InstrumentSetup smallSetup()
{
    InstrumentSetup setup;
    setup.modules = {{1, 1}};
    setup.memoryCapacity = 50;
    return setup;
}

} // namespace

/// The bytes are orders, one per line; a line that starts with ">" goes to the instrument instead.
/// Whatever was ordered, each order gets its answer, and the instrument works normally once all
/// faults are cleared.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Instant now{0};
    const auto clock = [&now] { return now; };
    Instrument instrument(smallSetup());
    Dialogue dialogue(instrument, "A,B,C,D");
    FaultPlan faults;
    InstrumentService service(instrument, dialogue, faults, clock, 1);
    ControlService control(instrument, faults, clock);
    service.answer("ROUT:SCAN (@101:103);:FORM:READ:UNIT ON;TIME ON;TIME:TYPE ABS;CHAN ON;ALAR ON");
    service.answer("INIT");

    LineBuffer buffer;
    buffer.append({reinterpret_cast<const char*>(data), size});
    buffer.append("\n");
    while (buffer.hasItem()) {
        const LineBuffer::Item item = buffer.take();
        now += 30ms;
        if (!item.line.empty() && item.line.front() == '>') {
            const Reply reply = service.answer(item.line.substr(1));
            FUZZ_CHECK(reply.text.find('\n') == std::string::npos);
            FUZZ_CHECK(reply.text.size() < kLongestReply);
            continue;
        }
        const std::string answer = control.answer(item.line).text;
        FUZZ_CHECK(answer == "ok" || answer.rfind("ok ", 0) == 0 || answer.rfind("error ", 0) == 0);
        service.isReachable();
        service.admitsClient();
    }
    FUZZ_CHECK(control.answer("clear").text == "ok");
    FUZZ_CHECK(control.answer("list").text == "ok");
    FUZZ_CHECK(service.isReachable() && service.admitsClient());
    const Reply identity = service.answer("*IDN?");
    FUZZ_CHECK(identity.text == "A,B,C,D" && identity.isComplete && !identity.breaksLink &&
               identity.delay.count() == 0);
    FUZZ_CHECK(service.answer("SYST:DATE?").text.size() == 10);
    return 0;
}
