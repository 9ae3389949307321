#include "visa/usbtransfer_posix.h"

#include <system_error>
#include <thread>
#include <utility>

namespace scn::visa {
namespace {

/// More than the program asks for at once, so that an ordinary message comes in one piece.
constexpr std::size_t kPartSize = 65536;

} // namespace

UsbTransfer::UsbTransfer(bool isReceiving, std::string bytes)
    : m_isReceiving(isReceiving)
    , m_bytes(std::move(bytes))
{
}

std::shared_ptr<UsbTransfer> UsbTransfer::send(std::shared_ptr<UsbLine> line, std::string message,
                                               std::chrono::milliseconds timeout)
{
    std::shared_ptr<UsbTransfer> transfer(new UsbTransfer(false, std::move(message)));
    return start(std::move(transfer), std::move(line), timeout);
}

std::shared_ptr<UsbTransfer> UsbTransfer::receive(std::shared_ptr<UsbLine> line,
                                                  std::chrono::milliseconds timeout)
{
    std::shared_ptr<UsbTransfer> transfer(new UsbTransfer(true, std::string(kPartSize, '\0')));
    return start(std::move(transfer), std::move(line), timeout);
}

std::shared_ptr<UsbTransfer> UsbTransfer::start(std::shared_ptr<UsbTransfer> transfer,
                                                std::shared_ptr<UsbLine> line,
                                                std::chrono::milliseconds timeout)
{
    if (!transfer->m_end.isOpen()) {
        return nullptr;
    }
    try {
        std::thread([transfer, line = std::move(line), timeout] {
            transfer->run(*line, timeout);
            transfer->m_isOver = true;
            transfer->m_end.wake();
        }).detach();
    } catch (const std::system_error&) {
        return nullptr;
    }
    return transfer;
}

std::string UsbTransfer::takeBytes()
{
    return m_isReceiving ? std::move(m_bytes) : std::string();
}

void UsbTransfer::run(UsbLine& line, std::chrono::milliseconds timeout)
{
    line.device->setTimeout(timeout);
    if (m_isReceiving) {
        runReceive(line);
    } else {
        runSend(line);
    }
}

void UsbTransfer::runSend(UsbLine& line)
{
    if (line.isMidMessage) {
        line.device->clear();
    }
    m_outcome = line.device->send(m_bytes.data(), m_bytes.size());
    line.isMidMessage = m_outcome != UsbDevice::Outcome::Done;
}

void UsbTransfer::runReceive(UsbLine& line)
{
    const UsbDevice::Reception got = line.device->receive(m_bytes.data(), m_bytes.size());
    m_bytes.resize(got.count);
    m_outcome = got.outcome;
    m_endsMessage = got.endsMessage;
    line.isMidMessage = !got.endsMessage;
}

} // namespace scn::visa
