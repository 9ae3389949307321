#pragma once

#include "visa/descriptortransport_posix.h"

namespace scn::visa {

/// A plain TCP connection.
class SocketTransport : public DescriptorTransport
{
public:
    using DescriptorTransport::DescriptorTransport;

    Result readSome(char* buffer, std::size_t size) override;
    Result writeSome(const char* bytes, std::size_t size) override;
    ViStatus setSerialAttribute(ViAttr attribute, ViAttrState value) override;
};

/// Connects to a host, each of its addresses in turn, by the deadline at the latest:
/// VI_ERROR_RSRC_NFOUND where nobody listens or no such host is known, VI_ERROR_TMO where nobody
/// answers in time.
OpenedTransport openSocket(const std::string& host, std::uint16_t port, const Deadline& deadline);

} // namespace scn::visa
