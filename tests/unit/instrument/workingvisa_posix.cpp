// Stands in for a platform's VISA library that works: PLATFORM0::<port>::INSTR is the instrument that
// listens on that port of this machine. It prints what it opens.

#include "visa/visatypes.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

using namespace scn::visa;

namespace {

constexpr ViSession kResourceManager = 1000000;
constexpr char kPrefix[] = "PLATFORM0::";

} // namespace

extern "C" {

ViStatus SCN_VISA_CALL viOpenDefaultRM(ViSession* resourceManager)
{
    *resourceManager = kResourceManager;
    return VI_SUCCESS;
}

/// The session is the descriptor of its connection.
ViStatus SCN_VISA_CALL viOpen(ViSession, const ViChar* resource, ViAccessMode, ViUInt32,
                              ViSession* session)
{
    const std::string line = std::string("library: viOpen ") + resource + "\n";
    const auto written = ::write(STDOUT_FILENO, line.data(), line.size());
    static_cast<void>(written);
    if (std::strncmp(resource, kPrefix, sizeof kPrefix - 1) != 0) {
        return VI_ERROR_RSRC_NFOUND;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(resource + sizeof kPrefix - 1)));
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(connection);
        return VI_ERROR_RSRC_NFOUND;
    }
    *session = static_cast<ViSession>(connection);
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viClose(ViObject object)
{
    if (object != kResourceManager) {
        ::close(static_cast<int>(object));
    }
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viSetAttribute(ViObject object, ViAttr attribute, ViAttrState value)
{
    if (attribute == VI_ATTR_TMO_VALUE) {
        const timeval timeout = {static_cast<time_t>(value / 1000),
                                 static_cast<suseconds_t>(value % 1000 * 1000)};
        ::setsockopt(static_cast<int>(object), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    }
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viStatusDesc(ViObject, ViStatus, ViChar* text)
{
    std::strcpy(text, "text of the library");
    return VI_SUCCESS;
}

ViStatus SCN_VISA_CALL viRead(ViSession session, ViByte* buffer, ViUInt32 size, ViUInt32* received)
{
    for (*received = 0; *received < size;) {
        ViByte* const next = buffer + *received;
        if (::recv(static_cast<int>(session), next, 1, 0) != 1) {
            return VI_ERROR_TMO;
        }
        ++*received;
        if (*next == '\n') {
            return VI_SUCCESS_TERM_CHAR;
        }
    }
    return VI_SUCCESS_MAX_CNT;
}

ViStatus SCN_VISA_CALL viWrite(ViSession session, const ViByte* bytes, ViUInt32 count,
                               ViUInt32* sent)
{
    const ssize_t written = ::send(static_cast<int>(session), bytes, count, MSG_NOSIGNAL);
    *sent = written < 0 ? 0 : static_cast<ViUInt32>(written);
    return *sent == count ? VI_SUCCESS : VI_ERROR_IO;
}

} // extern "C"
