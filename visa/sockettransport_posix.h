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

/// Connects to a host before the deadline, trying each of its addresses. VI_ERROR_RSRC_NFOUND if
/// the host is unknown or does not listen, VI_ERROR_TMO if it does not answer in time.
OpenedTransport openSocket(const std::string& host, std::uint16_t port, const Deadline& deadline);

} // namespace scn::visa
