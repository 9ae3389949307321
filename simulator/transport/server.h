#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "transport/lineservice.h"
#include "transport/link.h"
#include "transport/pseudoterminal.h"
#include "transport/tcplistener.h"
#include "transport/transcript.h"

namespace scnsim {

/// Serves one instrument on a TCP port and a pseudo-terminal, in one loop on one thread. Any
/// number of clients may be connected; their lines are carried out one at a time as they come.
class Server
{
public:
    Server(LineService& service, Transcript& transcript);

    /// @return false with a text in error
    bool listenTcp(std::uint16_t port, std::string& error);
    /// @param bitsPerSecond the speed at which replies leave; 0 for no limit
    bool openPseudoTerminal(const std::string& link, int bitsPerSecond, std::string& error);

    /// The resource names of the open ports in the order of their opening.
    const std::vector<std::string>& resources() const { return m_resources; }

    /// Serves until the descriptor becomes readable.
    void run(int stopDescriptor);

private:
    bool pollOnce(int stopDescriptor);
    int pollTimeoutMs() const;
    void acceptClient();
    bool serveLink(Link& link, short events);
    void answerLines(Link& link);

    LineService& m_service;
    Transcript& m_transcript;
    TcpListener m_listener;
    PseudoTerminal m_terminal;
    std::vector<std::unique_ptr<Link>> m_links;
    std::vector<std::string> m_resources;
};

} // namespace scnsim
