#pragma once

#include "posix/filedescriptor.h"
#include "visa/transport.h"
#include "visa/wakepipe_posix.h"

namespace scn::visa {

/// What all transports on a non-blocking file descriptor have in common.
class DescriptorTransport : public Transport
{
public:
    DescriptorTransport(FileDescriptor descriptor, WakePipe wakePipe);

    Wait wait(Direction direction, const Deadline& deadline) override;
    void interrupt() override;

protected:
    int descriptor() const { return m_descriptor.get(); }

    /// The result of a read() or recv(), with errno as it left it. An end of file is a loss.
    static Result resultOfRead(long count);
    /// The result of a write() or send(), with errno as it left it.
    static Result resultOfWrite(long count);

private:
    FileDescriptor m_descriptor;
    WakePipe m_wakePipe;
};

/// Waits in poll() for the events on the descriptor, for the wake pipe or for the deadline. The one
/// place of the provider where a thread stands still.
Transport::Wait waitForDescriptor(int descriptor, short events, int wakeDescriptor,
                                  const Deadline& deadline);

} // namespace scn::visa
