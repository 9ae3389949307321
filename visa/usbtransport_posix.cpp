#include "visa/usbtransport_posix.h"

#include "visa/descriptortransport_posix.h"
#include "visa/usbdevicefile_posix.h"
#include "visa/usbinstrument_posix.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace scn::visa {
namespace {

/// How much longer than its caller a transfer waits: only the caller's time-out counts.
constexpr std::chrono::milliseconds kGrace{100};

} // namespace

UsbTransport::UsbTransport(std::unique_ptr<UsbDevice> device, WakePipe wakePipe)
    : m_line(std::make_shared<UsbLine>(UsbLine{std::move(device), false}))
    , m_wakePipe(std::move(wakePipe))
{
}

Transport::Result UsbTransport::readSome(char* buffer, std::size_t size)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    collect();
    if (m_received.empty() && !m_endsMessage) {
        return {std::exchange(m_inputState, State::Nothing), 0, false};
    }
    const std::size_t count = std::min(size, m_received.size());
    std::copy_n(m_received.data(), count, buffer);
    m_received.erase(0, count);
    const bool endsMessage = m_endsMessage && m_received.empty();
    if (endsMessage) {
        m_endsMessage = false;
    }
    return {State::Moved, count, endsMessage};
}

Transport::Result UsbTransport::writeSome(const char* bytes, std::size_t size)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    collect();
    const State state = std::exchange(m_outputState, State::Nothing);
    if (state == State::Nothing) {
        m_message.assign(bytes, size);
    }
    return {state, state == State::Moved ? size : 0, false};
}

Transport::Wait UsbTransport::wait(Direction direction, const Deadline& deadline)
{
    if (direction == Direction::Neither) {
        return waitForDescriptor(-1, 0, m_wakePipe.readEnd(), deadline);
    }
    for (;;) {
        const Step step = nextStep(direction, deadline);
        if (step.isReady) {
            return Wait::Ready;
        }
        if (!step.transfer) {
            return Wait::Failed;
        }
        const Wait wait = waitForDescriptor(step.transfer->endDescriptor(), POLLIN,
                                            m_wakePipe.readEnd(), deadline);
        if (wait != Wait::Ready) {
            return wait;
        }
        if (step.isOurs && !claim(*step.transfer)) {
            return Wait::TimedOut;
        }
    }
}

void UsbTransport::interrupt()
{
    m_wakePipe.wake();
}

ViStatus UsbTransport::setSerialAttribute(ViAttr, ViAttrState)
{
    return VI_ERROR_NSUP_ATTR;
}

/// What a wait has to do: nothing, or to wait for the end of a transfer, its own or another's.
UsbTransport::Step UsbTransport::nextStep(Direction direction, const Deadline& deadline)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    collect();
    const bool isInput = direction == Direction::Input;
    const bool hasInput = !m_received.empty() || m_endsMessage || m_inputState != State::Nothing;
    if (isInput ? hasInput : m_outputState != State::Nothing) {
        return {true, false, nullptr};
    }
    if (m_transfer) {
        return {false, false, m_transfer};
    }
    const std::chrono::milliseconds timeout = deadline.remaining() + kGrace;
    if (isInput) {
        m_transfer = UsbTransfer::receive(m_line, timeout);
    } else {
        // A late reply may have come while the message had to wait.
        m_received.clear();
        m_endsMessage = false;
        m_transfer = UsbTransfer::send(m_line, m_message, timeout);
    }
    return {false, true, m_transfer};
}

/// Takes over how a transfer ended that the caller has begun. False if a message could not be sent in
/// time: it must not go out a second time.
bool UsbTransport::claim(const UsbTransfer& transfer)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    // It also makes visible here what the transfer's thread has written.
    collect();
    const UsbDevice::Outcome outcome = transfer.outcome();
    State& state = transfer.isReceiving() ? m_inputState : m_outputState;
    if (outcome == UsbDevice::Outcome::Failed) {
        state = State::Failed;
    }
    if (!transfer.isReceiving() && outcome == UsbDevice::Outcome::Done) {
        state = State::Moved;
    }
    return transfer.isReceiving() || outcome != UsbDevice::Outcome::TimedOut;
}

/// Takes over what a transfer has brought, also one that nobody waits for any more.
void UsbTransport::collect()
{
    if (!m_transfer || !m_transfer->isOver()) {
        return;
    }
    m_received += m_transfer->takeBytes();
    m_endsMessage = m_transfer->endsMessage();
    if (m_transfer->outcome() == UsbDevice::Outcome::Lost) {
        m_inputState = State::Lost;
        m_outputState = State::Lost;
    }
    m_transfer.reset();
}

OpenedTransport openUsbInstrument(const ResourceName& name, const std::filesystem::path& root)
{
    const auto instrument = findUsbInstrument(name, root);
    if (!instrument) {
        return {VI_ERROR_RSRC_NFOUND, nullptr};
    }
    WakePipe wakePipe;
    if (!wakePipe.isOpen()) {
        return {VI_ERROR_ALLOC, nullptr};
    }
    FileDescriptor file(::open(instrument->deviceFile.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen()) {
        return {statusOfOpenError(errno), nullptr};
    }
    auto device = std::make_unique<UsbDeviceFile>(std::move(file));
    return {VI_SUCCESS, std::make_unique<UsbTransport>(std::move(device), std::move(wakePipe))};
}

} // namespace scn::visa
