#include "visa/hostlookup_posix.h"

#include "posix/wakepipe.h"
#include "visa/descriptortransport_posix.h"

#include <netdb.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace scn::visa {
namespace {

/// Shared by the caller and the resolving thread; it goes with the last of them.
struct PendingLookup
{
    std::string host;
    std::string port;
    WakePipe done;
    std::mutex mutex;
    std::vector<SocketAddress> addresses;
};

std::vector<SocketAddress> resolve(const std::string& host, const std::string& port, int flags)
{
    addrinfo hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV | flags;
    addrinfo* found = nullptr;
    std::vector<SocketAddress> addresses;
    if (::getaddrinfo(host.c_str(), port.c_str(), &hints, &found) != 0) {
        return addresses;
    }
    for (const addrinfo* info = found; info; info = info->ai_next) {
        SocketAddress address;
        address.family = info->ai_family;
        address.size = info->ai_addrlen;
        std::memcpy(&address.storage, info->ai_addr, info->ai_addrlen);
        addresses.push_back(address);
    }
    ::freeaddrinfo(found);
    return addresses;
}

HostLookup resolveOnThread(const std::string& host, const std::string& port,
                           const Deadline& deadline)
{
    const auto pending = std::make_shared<PendingLookup>();
    pending->host = host;
    pending->port = port;
    if (!pending->done.isOpen()) {
        return {VI_ERROR_ALLOC, {}};
    }
    try {
        std::thread([pending] {
            auto addresses = resolve(pending->host, pending->port, 0);
            {
                const std::lock_guard<std::mutex> lock(pending->mutex);
                pending->addresses = std::move(addresses);
            }
            pending->done.wake();
        }).detach();
    } catch (const std::system_error&) {
        return {VI_ERROR_ALLOC, {}};
    }
    // The finished look-up writes to the wake pipe, so the wait reports an interruption.
    const Transport::Wait wait = waitForDescriptor(-1, 0, pending->done.readEnd(), deadline);
    if (wait != Transport::Wait::Interrupted) {
        return {wait == Transport::Wait::TimedOut ? VI_ERROR_TMO : VI_ERROR_SYSTEM_ERROR, {}};
    }
    const std::lock_guard<std::mutex> lock(pending->mutex);
    return {VI_SUCCESS, std::move(pending->addresses)};
}

} // namespace

HostLookup lookUpHost(const std::string& host, std::uint16_t port, const Deadline& deadline)
{
    const std::string service = std::to_string(port);
    HostLookup lookup{VI_SUCCESS, resolve(host, service, AI_NUMERICHOST)};
    if (lookup.addresses.empty()) {
        lookup = resolveOnThread(host, service, deadline);
    }
    if (lookup.status == VI_SUCCESS && lookup.addresses.empty()) {
        lookup.status = VI_ERROR_RSRC_NFOUND;
    }
    return lookup;
}

std::string addressSpelling(const std::string& host)
{
    const std::vector<SocketAddress> found = resolve(host, "0", AI_NUMERICHOST);
    if (found.empty()) {
        return host;
    }
    const auto* const address = reinterpret_cast<const sockaddr*>(&found.front().storage);
    char text[NI_MAXHOST];
    if (::getnameinfo(address, found.front().size, text, sizeof text, nullptr, 0, NI_NUMERICHOST) !=
        0) {
        return host;
    }
    constexpr std::string_view kMapped = "::ffff:";
    const std::string_view spelling = text;
    const bool isMapped = spelling.substr(0, kMapped.size()) == kMapped &&
                          spelling.find('.') != std::string_view::npos;
    return std::string(isMapped ? spelling.substr(kMapped.size()) : spelling);
}

} // namespace scn::visa
