#pragma once

#include "posix/filedescriptor.h"
#include "posix/wakepipe.h"
#include "visa/transport.h"

namespace scn::visa {

/// Base of the transports that use a non-blocking file descriptor.
class DescriptorTransport : public Transport
{
public:
    DescriptorTransport(FileDescriptor descriptor, WakePipe wakePipe);

    Wait wait(Direction direction, const Deadline& deadline) override;
    void interrupt() override;

protected:
    int descriptor() const { return m_descriptor.get(); }

    /// The result of a read() or recv() that has just returned. An end of file is a loss.
    static Result resultOfRead(long count);
    /// The result of a write() or send() that has just returned.
    static Result resultOfWrite(long count);

private:
    FileDescriptor m_descriptor;
    WakePipe m_wakePipe;
};

/// Waits in poll() for the events on the descriptor, for the wake pipe or for the deadline. The
/// provider blocks nowhere else.
Transport::Wait waitForDescriptor(int descriptor, short events, int wakeDescriptor,
                                  const Deadline& deadline);

/// The status of a device file that could not be opened, from errno.
ViStatus statusOfOpenError(int error);

} // namespace scn::visa
