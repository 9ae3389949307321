#pragma once

#include "posix/filedescriptor.h"
#include "visa/usbdevice.h"

namespace scn::visa {

/// The device file that Linux' driver for USB test and measurement devices makes: a write is a message,
/// a read is a part of one. What an older driver does not know is left undone.
class UsbDeviceFile : public UsbDevice
{
public:
    /// Like ioctl(); tests put their own there.
    using Control = int (*)(int descriptor, unsigned long request, void* argument);

    explicit UsbDeviceFile(FileDescriptor file, Control control = systemControl);

    void setTimeout(std::chrono::milliseconds timeout) override;
    Reception receive(char* buffer, std::size_t size) override;
    Outcome send(const char* bytes, std::size_t size) override;
    void clear() override;

private:
    static int systemControl(int descriptor, unsigned long request, void* argument);

    bool endsMessage(std::size_t count, std::size_t size) const;

    const FileDescriptor m_file;
    const Control m_control;
};

/// What an errno of a transfer means.
UsbDevice::Outcome usbOutcomeOf(int error);

} // namespace scn::visa
