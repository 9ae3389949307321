#include "transport/server.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <utility>

namespace scnsim {

namespace {

/// The loop wakes up at least this often.
constexpr int kTickMs = 50;
/// And this often while a paced line has something to send.
constexpr int kPacedTickMs = 1;

constexpr const char* kTcpPort = "tcp";
constexpr const char* kTerminalPort = "pty";

short wantedEvents(const Link& link)
{
    const int input = link.takesInput() ? POLLIN : 0;
    // A paced stream would always be ready: its output goes with the ticks.
    const int output = link.hasPendingOutput() && !link.isPaced() ? POLLOUT : 0;
    return static_cast<short>(input | output);
}

} // namespace

Server::Server(LineService& service, Transcript& transcript)
    : m_service(service)
    , m_transcript(transcript)
{
}

bool Server::listenTcp(std::uint16_t port, std::string& error)
{
    if (!m_listener.listen(port, error)) {
        return false;
    }
    m_resources.push_back("TCPIP0::127.0.0.1::" + std::to_string(m_listener.port()) + "::SOCKET");
    return true;
}

bool Server::openPseudoTerminal(const std::string& link, int bitsPerSecond, std::string& error)
{
    if (!m_terminal.open(link, error)) {
        return false;
    }
    m_links.push_back(std::make_unique<Link>(m_terminal.takeStream(), kTerminalPort,
                                             Link::LateReply::Dropped, Pace(bitsPerSecond)));
    m_resources.push_back("ASRL" + m_terminal.link() + "::INSTR");
    return true;
}

void Server::run(int stopDescriptor)
{
    while (pollOnce(stopDescriptor)) {
        m_service.tick();
    }
}

/// @return false when it is time to stop
bool Server::pollOnce(int stopDescriptor)
{
    std::vector<pollfd> polled = {{stopDescriptor, POLLIN, 0},
                                  {m_listener.descriptor(), POLLIN, 0}};
    for (const std::unique_ptr<Link>& link : m_links) {
        polled.push_back({link->descriptor(), wantedEvents(*link), 0});
    }
    if (poll(polled.data(), polled.size(), pollTimeoutMs()) < 0) {
        return errno == EINTR;
    }
    if (polled[0].revents != 0) {
        return false;
    }
    std::vector<std::unique_ptr<Link>> alive;
    for (std::size_t i = 0; i < m_links.size(); ++i) {
        if (serveLink(*m_links[i], polled[i + 2].revents)) {
            alive.push_back(std::move(m_links[i]));
        }
    }
    m_links = std::move(alive);
    if (polled[1].revents != 0) {
        acceptClient();
    }
    return true;
}

int Server::pollTimeoutMs() const
{
    const bool pacing = std::any_of(m_links.begin(), m_links.end(), [](const auto& link) {
        return link->isPaced() && link->hasPendingOutput();
    });
    return pacing ? kPacedTickMs : kTickMs;
}

void Server::acceptClient()
{
    Descriptor stream = m_listener.accept();
    if (stream.isOpen()) {
        m_links.push_back(
            std::make_unique<Link>(std::move(stream), kTcpPort, Link::LateReply::Kept));
    }
}

/// @return false once the peer has gone
bool Server::serveLink(Link& link, short events)
{
    const bool mayWrite = (events & POLLOUT) != 0 || link.isPaced();
    if (mayWrite && !link.flush()) {
        return false;
    }
    const bool readable = (events & (POLLIN | POLLHUP | POLLERR)) != 0;
    const bool alive = !readable || link.receive();
    // Lines that came before the end are carried out, although nobody waits for the answers.
    answerLines(link);
    return alive;
}

void Server::answerLines(Link& link)
{
    while (link.takesInput() && link.input().hasItem()) {
        const LineBuffer::Item item = link.input().take();
        if (link.dropLateReply()) {
            m_service.replyInterrupted();
        }
        if (item.tooLong) {
            m_service.lineTooLong();
            continue;
        }
        m_transcript.write(link.port(), Transcript::Direction::Received, item.line);
        const std::string reply = m_service.answer(item.line);
        if (!reply.empty()) {
            m_transcript.write(link.port(), Transcript::Direction::Sent, reply);
            link.send(reply);
        }
    }
}

} // namespace scnsim
