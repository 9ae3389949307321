#include "visa/serialtransport_posix.h"
#include "visa/sockettransport_posix.h"

namespace scn::visa {

OpenedTransport openTransport(const ResourceName& name, const Deadline& deadline)
{
    if (name.kind == ResourceName::Kind::Socket) {
        return openSocket(name.host, name.port, deadline);
    }
    return openSerialPort(name.device);
}

} // namespace scn::visa
