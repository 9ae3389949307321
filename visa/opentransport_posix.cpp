#include "visa/serialtransport_posix.h"
#include "visa/sockettransport_posix.h"
#include "visa/usbtransport_posix.h"

namespace scn::visa {

OpenedTransport openTransport(const ResourceName& name, const Deadline& deadline)
{
    switch (name.kind) {
    case ResourceName::Kind::Socket:
        return openSocket(name.host, name.port, deadline);
    case ResourceName::Kind::Usb:
        return openUsbInstrument(name);
    case ResourceName::Kind::Serial:
        break;
    }
    return openSerialPort(name.device);
}

} // namespace scn::visa
