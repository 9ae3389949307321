#include "visa/serialtransport_posix.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

namespace scn::visa {
namespace {

struct BaudRow
{
    ViAttrState baud;
    speed_t speed;
};

constexpr BaudRow kBaudRows[] = {
    {50, B50},         {75, B75},         {110, B110},       {134, B134},     {150, B150},
    {200, B200},       {300, B300},       {600, B600},       {1200, B1200},   {1800, B1800},
    {2400, B2400},     {4800, B4800},     {9600, B9600},     {19200, B19200}, {38400, B38400},
    {57600, B57600},   {115200, B115200}, {230400, B230400},
#ifdef B460800
    {460800, B460800},
#endif
#ifdef B921600
    {921600, B921600},
#endif
};

/// An attribute's value and its control flags.
struct FlagRow
{
    ViAttr attribute;
    ViAttrState value;
    tcflag_t flags;
};

constexpr FlagRow kFlagRows[] = {
    {VI_ATTR_ASRL_DATA_BITS, 5, CS5},
    {VI_ATTR_ASRL_DATA_BITS, 6, CS6},
    {VI_ATTR_ASRL_DATA_BITS, 7, CS7},
    {VI_ATTR_ASRL_DATA_BITS, 8, CS8},
    {VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_NONE, 0},
    {VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_ODD, PARENB | PARODD},
    {VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_EVEN, PARENB},
#ifdef CMSPAR
    {VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_MARK, PARENB | PARODD | CMSPAR},
    {VI_ATTR_ASRL_PARITY, VI_ASRL_PAR_SPACE, PARENB | CMSPAR},
#endif
    {VI_ATTR_ASRL_STOP_BITS, VI_ASRL_STOP_ONE, 0},
    {VI_ATTR_ASRL_STOP_BITS, VI_ASRL_STOP_TWO, CSTOPB},
};

std::optional<speed_t> speedOf(ViAttrState baud)
{
    for (const BaudRow& row : kBaudRows) {
        if (row.baud == baud) {
            return row.speed;
        }
    }
    return std::nullopt;
}

/// The rate that the user chose for the line, which the resource's name has no room for.
std::optional<ViAttrState> chosenRate()
{
    const char* const text = std::getenv("SCN4070A_SERIAL_RATE");
    if (!text) {
        return std::nullopt;
    }
    const char* const end = text + std::strlen(text);
    ViAttrState rate = 0;
    const auto [rest, error] = std::from_chars(text, end, rate);
    const bool isRate = error == std::errc() && rest == end && speedOf(rate);
    return isRate ? std::optional(rate) : std::nullopt;
}

std::optional<tcflag_t> flagsOf(ViAttr attribute, ViAttrState value)
{
    for (const FlagRow& row : kFlagRows) {
        if (row.attribute == attribute && row.value == value) {
            return row.flags;
        }
    }
    return std::nullopt;
}

/// All control flags that an attribute may set; 0 if there are none.
tcflag_t flagMaskOf(ViAttr attribute)
{
    tcflag_t mask = 0;
    for (const FlagRow& row : kFlagRows) {
        if (row.attribute == attribute) {
            mask |= row.flags;
        }
    }
    // Five bits set no flag at all, so the rows alone do not cover the field.
    return attribute == VI_ATTR_ASRL_DATA_BITS ? mask | CSIZE : mask;
}

ViStatus setSpeed(int descriptor, termios& settings, ViAttrState baud)
{
    const auto speed = speedOf(baud);
    if (!speed || ::cfsetispeed(&settings, *speed) != 0 || ::cfsetospeed(&settings, *speed) != 0) {
        return VI_ERROR_NSUP_ATTR_STATE;
    }
    termios taken = {};
    if (::tcsetattr(descriptor, TCSANOW, &settings) != 0 || ::tcgetattr(descriptor, &taken) != 0) {
        return VI_ERROR_IO;
    }
    return ::cfgetospeed(&taken) == *speed ? VI_SUCCESS : VI_ERROR_NSUP_ATTR_STATE;
}

/// tcsetattr() succeeds if it could set anything at all, so the flags are read back.
ViStatus setFlags(int descriptor, termios& settings, ViAttr attribute, ViAttrState value)
{
    const tcflag_t mask = flagMaskOf(attribute);
    const auto flags = flagsOf(attribute, value);
    if (!flags) {
        return VI_ERROR_NSUP_ATTR_STATE;
    }
    settings.c_cflag = (settings.c_cflag & ~mask) | *flags;
    termios taken = {};
    const bool set = ::tcsetattr(descriptor, TCSANOW, &settings) == 0;
    if (!set && errno != EINVAL) {
        return VI_ERROR_IO;
    }
    if (::tcgetattr(descriptor, &taken) != 0) {
        return VI_ERROR_IO;
    }
    return set && (taken.c_cflag & mask) == *flags ? VI_SUCCESS : VI_ERROR_NSUP_ATTR_STATE;
}

bool setRawMode(int descriptor)
{
    termios settings = {};
    if (::tcgetattr(descriptor, &settings) != 0) {
        return false;
    }
    ::cfmakeraw(&settings);
    settings.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
    settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | PARENB | CSIZE);
#ifdef CRTSCTS
    settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
#endif
    settings.c_cflag |= CS8 | CLOCAL | CREAD;
    // With a minimum of one byte, a read of 0 bytes can only mean a hang-up.
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return ::cfsetispeed(&settings, B9600) == 0 && ::cfsetospeed(&settings, B9600) == 0 &&
           ::tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

} // namespace

Transport::Result SerialTransport::readSome(char* buffer, std::size_t size)
{
    return resultOfRead(::read(descriptor(), buffer, size));
}

Transport::Result SerialTransport::writeSome(const char* bytes, std::size_t size)
{
    return resultOfWrite(::write(descriptor(), bytes, size));
}

ViStatus SerialTransport::setSerialAttribute(ViAttr attribute, ViAttrState value)
{
    const bool isBaud = attribute == VI_ATTR_ASRL_BAUD;
    if (!isBaud && flagMaskOf(attribute) == 0) {
        return VI_ERROR_NSUP_ATTR;
    }
    termios settings = {};
    if (::tcgetattr(descriptor(), &settings) != 0) {
        return VI_ERROR_IO;
    }
    return isBaud ? setSpeed(descriptor(), settings, chosenRate().value_or(value))
                  : setFlags(descriptor(), settings, attribute, value);
}

bool isSerialRate(int baud)
{
    return speedOf(static_cast<ViAttrState>(baud)).has_value();
}

OpenedTransport openSerialPort(const std::string& device)
{
    WakePipe wakePipe;
    if (!wakePipe.isOpen()) {
        return {VI_ERROR_ALLOC, nullptr};
    }
    // Not the controlling terminal: a hang-up of the line must not signal this process.
    FileDescriptor port(::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!port.isOpen()) {
        return {statusOfOpenError(errno), nullptr};
    }
    if (!::isatty(port.get())) {
        return {VI_ERROR_RSRC_NFOUND, nullptr};
    }
    if (!setRawMode(port.get())) {
        return {VI_ERROR_IO, nullptr};
    }
    return {VI_SUCCESS, std::make_unique<SerialTransport>(std::move(port), std::move(wakePipe))};
}

} // namespace scn::visa
