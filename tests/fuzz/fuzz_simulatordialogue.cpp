#include "check.h"
#include "dialogue/dialogue.h"
#include "transport/linebuffer.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace scnsim;
using namespace std::chrono_literals;

constexpr const char* kIdentity = "SCN,SCN4070A,MY00000042,01.02-sim";
constexpr const char* kNoError = "+0,\"No error\"";

InstrumentSetup smallSetup()
{
    InstrumentSetup setup;
    setup.modules = {{1, 1}};
    // Few, so that the memory overflows soon.
    setup.memoryCapacity = 50;
    setup.openChannels = {102};
    return setup;
}

/// An error as the queue returns it: number, comma, quoted text.
bool isError(const std::string& text)
{
    const std::size_t comma = text.find(",\"");
    return comma != std::string::npos && (text.front() == '-' || text.front() == '+') &&
           text.back() == '"';
}

} // namespace

/// The bytes are a client's input. Whatever it is, the instrument goes on: it answers in complete
/// lines, its error queue empties, and the identity query that follows is answered.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Instrument instrument(smallSetup());
    Dialogue dialogue(instrument, kIdentity);
    LineBuffer buffer;
    Instant now{0};
    buffer.append({reinterpret_cast<const char*>(data), size});
    buffer.append("\n");
    while (buffer.hasItem()) {
        const LineBuffer::Item item = buffer.take();
        now += 7ms;
        if (item.tooLong) {
            dialogue.report(ErrorCode::InputBufferOverrun);
        } else {
            FUZZ_CHECK(dialogue.handle(item.line, now).find('\n') == std::string::npos);
        }
    }
    now += 100ms;
    std::string error = dialogue.handle("SYST:ERR?", now);
    for (std::size_t i = 0; i < ErrorQueue::kCapacity && error != kNoError; ++i) {
        FUZZ_CHECK(isError(error));
        error = dialogue.handle("SYST:ERR?", now);
    }
    FUZZ_CHECK(error == kNoError);
    FUZZ_CHECK(dialogue.handle("*IDN?", now) == kIdentity);
    FUZZ_CHECK(
        !dialogue.handle("ROUT:SCAN?;:FUNC? (@101:122);:CALC:SCAL:UNIT? (@101)", now).empty());
    FUZZ_CHECK(dialogue.handle("ABOR;:STAT:OPER:COND?", now) == "+256");
    return 0;
}
