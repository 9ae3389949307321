#pragma once

#include "transport/lineservice.h"
#include "transport/link.h"
#include "transport/pseudoterminal.h"
#include "transport/tcplistener.h"
#include "transport/transcript.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace scnsim {

/// Serves one instrument on a TCP port and a pseudo-terminal, and its control port, in one loop on
/// one thread. Any number of clients may connect; their lines are handled one at a time, as they
/// arrive. The transcript holds only the instrument's dialogue.
class Server
{
public:
    Server(LineService& instrument, Transcript& transcript);

    /// @return false with a text in error
    bool listenTcp(std::uint16_t port, std::string& error);
    /// @param bitsPerSecond the speed at which replies leave; 0 for no limit
    bool openPseudoTerminal(const std::string& link, int bitsPerSecond, std::string& error);
    bool listenControl(LineService& control, std::uint16_t port, std::string& error);

    /// The resource names of the instrument's open ports, in the order they were opened.
    const std::vector<std::string>& resources() const { return m_resources; }
    std::uint16_t controlPort() const { return m_controlListener.port(); }

    /// Serves until the descriptor becomes readable.
    void run(int stopDescriptor);

private:
    struct Client
    {
        std::unique_ptr<Link> link;
        LineService* service;
    };

    bool pollOnce(int stopDescriptor);
    std::chrono::milliseconds pollTimeout() const;
    void acceptClient(TcpListener& listener, LineService& service);
    bool serveClient(Client& client, short events);
    bool answerLines(Client& client);
    bool answerLine(Client& client, const std::string& line);
    void sendReply(Client& client, Reply reply);
    void sendLateReplies(Client& client);
    void record(const Client& client, Transcript::Direction direction, const std::string& line);
    void serveTerminal();
    void followReachability();

    LineService& m_instrument;
    LineService* m_control = nullptr;
    Transcript& m_transcript;
    TcpListener m_listener;
    TcpListener m_controlListener;
    PseudoTerminal m_terminal;
    int m_bitsPerSecond = 0;
    /// No client is accepted before this time.
    Link::Time m_acceptAgain = {};
    std::vector<Client> m_clients;
    std::vector<std::string> m_resources;
};

} // namespace scnsim
