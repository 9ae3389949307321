#include "visa/usbdevicefile_posix.h"

#include <linux/usb/tmc.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace scn::visa {
namespace {

/// The driver refuses shorter ones.
constexpr std::chrono::milliseconds kShortestTimeout{100};

/// The end of the message, among the attributes of a transfer.
constexpr __u8 kEndOfMessage = 0x01;

} // namespace

UsbDeviceFile::UsbDeviceFile(FileDescriptor file, Control control)
    : m_file(std::move(file))
    , m_control(control)
{
    // Otherwise a read that times out leaves the instrument waiting to answer it, and the next one fails.
    __u8 on = 1;
    m_control(m_file.get(), USBTMC_IOCTL_AUTO_ABORT, &on);
}

void UsbDeviceFile::setTimeout(std::chrono::milliseconds timeout)
{
    auto timeoutMs = static_cast<__u32>(std::max(timeout, kShortestTimeout).count());
    m_control(m_file.get(), USBTMC_IOCTL_SET_TIMEOUT, &timeoutMs);
}

UsbDevice::Reception UsbDeviceFile::receive(char* buffer, std::size_t size)
{
    const ssize_t got = ::read(m_file.get(), buffer, size);
    if (got < 0) {
        return {usbOutcomeOf(errno), 0, false};
    }
    const auto count = static_cast<std::size_t>(got);
    return {Outcome::Done, count, endsMessage(count, size)};
}

UsbDevice::Outcome UsbDeviceFile::send(const char* bytes, std::size_t size)
{
    const ssize_t sent = ::write(m_file.get(), bytes, size);
    if (sent < 0) {
        return usbOutcomeOf(errno);
    }
    // The rest would be a message of its own.
    return static_cast<std::size_t>(sent) == size ? Outcome::Done : Outcome::Failed;
}

void UsbDeviceFile::clear()
{
    m_control(m_file.get(), USBTMC_IOCTL_CLEAR, nullptr);
}

int UsbDeviceFile::systemControl(int descriptor, unsigned long request, void* argument)
{
    return ::ioctl(descriptor, request, argument);
}

/// Whether the read that has just returned `count` bytes of up to `size` was a message's last. A driver
/// that cannot tell reads on until the message ends or the buffer is full.
bool UsbDeviceFile::endsMessage(std::size_t count, std::size_t size) const
{
    __u8 attributes = 0;
    if (m_control(m_file.get(), USBTMC_IOCTL_MSG_IN_ATTR, &attributes) != 0) {
        return count < size;
    }
    return (attributes & kEndOfMessage) != 0;
}

UsbDevice::Outcome usbOutcomeOf(int error)
{
    switch (error) {
    case ETIMEDOUT:
        return UsbDevice::Outcome::TimedOut;
    case ENODEV:
    case ENXIO:
    case ESHUTDOWN:
        return UsbDevice::Outcome::Lost;
    default:
        return UsbDevice::Outcome::Failed;
    }
}

} // namespace scn::visa
