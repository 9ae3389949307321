#pragma once

#include "visa/deadline.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>
#include <vector>

namespace scn::visa {

/// One address to try.
struct SocketAddress
{
    sockaddr_storage storage = {};
    socklen_t size = 0;
    int family = 0;
};

struct HostLookup
{
    /// VI_SUCCESS, VI_ERROR_RSRC_NFOUND for an unknown host, VI_ERROR_TMO or VI_ERROR_ALLOC.
    ViStatus status = VI_SUCCESS;
    std::vector<SocketAddress> addresses;
};

/// The addresses of a host and TCP port, in the order to try them. An address needs no look-up; a
/// name is looked up on a thread of its own, because the system's resolver can be neither limited
/// in time nor interrupted.
HostLookup lookUpHost(const std::string& host, std::uint16_t port, const Deadline& deadline);

/// The one spelling of an address: decimal parts, hexadecimal groups without needless zeros, IPv4 in an
/// IPv6 address as IPv4. A host name stays as it is; nothing is looked up.
std::string addressSpelling(const std::string& host);

} // namespace scn::visa
