#include "transport/server.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace scnsim {

namespace {

/// The loop wakes up at least this often.
constexpr std::chrono::milliseconds kTick{50};
/// The interval while a paced line has output or a reply is held back.
constexpr std::chrono::milliseconds kPacedTick{1};
/// How long to refuse clients after one could not be accepted.
constexpr std::chrono::milliseconds kAcceptPause(50);

constexpr const char* kTcpPort = "tcp";
constexpr const char* kTerminalPort = "pty";
constexpr const char* kControlPort = "control";

/// Number of descriptors ahead of the clients' in each poll.
enum FixedDescriptor { kStop, kInstrumentListener, kControlListener, kFixedCount };

short wantedEvents(const Link& link)
{
    const int input = link.takesInput() ? POLLIN : 0;
    // A paced stream would always be writable, so its output goes out on ticks.
    const int output = link.hasPendingOutput() && !link.isPaced() ? POLLOUT : 0;
    return static_cast<short>(input | output);
}

Link::Time now()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace

Server::Server(LineService& instrument, Transcript& transcript)
    : m_instrument(instrument)
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
    m_bitsPerSecond = bitsPerSecond;
    m_resources.push_back("ASRL" + m_terminal.link() + "::INSTR");
    serveTerminal();
    return true;
}

bool Server::listenControl(LineService& control, std::uint16_t port, std::string& error)
{
    m_control = &control;
    return m_controlListener.listen(port, error);
}

void Server::run(int stopDescriptor)
{
    do {
        m_instrument.tick();
        followReachability();
    } while (pollOnce(stopDescriptor));
}

/// @return false when it is time to stop
bool Server::pollOnce(int stopDescriptor)
{
    // poll() skips negative descriptors.
    const bool accepts = now() >= m_acceptAgain;
    std::vector<pollfd> polled = {{stopDescriptor, POLLIN, 0},
                                  {accepts ? m_listener.descriptor() : -1, POLLIN, 0},
                                  {accepts ? m_controlListener.descriptor() : -1, POLLIN, 0}};
    for (const Client& client : m_clients) {
        polled.push_back({client.link->descriptor(), wantedEvents(*client.link), 0});
    }
    if (poll(polled.data(), polled.size(), static_cast<int>(pollTimeout().count())) < 0) {
        return errno == EINTR;
    }
    if (polled[kStop].revents != 0) {
        return false;
    }
    std::vector<Client> alive;
    bool lostTerminal = false;
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        if (serveClient(m_clients[i], polled[i + kFixedCount].revents)) {
            alive.push_back(std::move(m_clients[i]));
        } else {
            lostTerminal = lostTerminal || m_clients[i].link->port() == kTerminalPort;
        }
    }
    m_clients = std::move(alive);
    if (lostTerminal) {
        serveTerminal();
    }
    if (polled[kInstrumentListener].revents != 0) {
        acceptClient(m_listener, m_instrument);
    }
    if (polled[kControlListener].revents != 0) {
        acceptClient(m_controlListener, *m_control);
    }
    return true;
}

std::chrono::milliseconds Server::pollTimeout() const
{
    const bool waiting = std::any_of(m_clients.begin(), m_clients.end(), [](const Client& client) {
        return client.link->hasLateReplies() ||
               (client.link->isPaced() && client.link->hasPendingOutput());
    });
    return waiting ? kPacedTick : kTick;
}

void Server::acceptClient(TcpListener& listener, LineService& service)
{
    scn::FileDescriptor stream = listener.accept();
    if (!stream.isOpen()) {
        // With no free descriptor the client stays pending and each poll would return at once.
        m_acceptAgain = now() + kAcceptPause;
        return;
    }
    if (!service.admitsClient()) {
        TcpListener::reset(std::move(stream));
        return;
    }
    const char* const port = &service == &m_instrument ? kTcpPort : kControlPort;
    m_clients.push_back(
        {std::make_unique<Link>(std::move(stream), port, Link::LateReply::Kept), &service});
}

/// @return false once the connection has ended
bool Server::serveClient(Client& client, short events)
{
    Link& link = *client.link;
    sendLateReplies(client);
    const bool mayWrite = (events & POLLOUT) != 0 || link.isPaced();
    if (mayWrite && !link.flush()) {
        return false;
    }
    const bool readable = (events & (POLLIN | POLLHUP | POLLERR)) != 0;
    const bool alive = !readable || link.receive();
    // Lines received before the end are still carried out, although nobody reads the answers.
    return answerLines(client) && alive;
}

/// @return false if the connection is to break
bool Server::answerLines(Client& client)
{
    Link& link = *client.link;
    while (link.takesInput() && link.input().hasItem()) {
        const LineBuffer::Item item = link.input().take();
        if (link.dropLateReply()) {
            client.service->replyInterrupted();
        }
        if (item.tooLong) {
            sendReply(client, client.service->lineTooLong());
        } else if (!answerLine(client, item.line)) {
            return false;
        }
    }
    return true;
}

/// @return false if the connection is to break
bool Server::answerLine(Client& client, const std::string& line)
{
    record(client, Transcript::Direction::Received, line);
    Reply reply = client.service->answer(line);
    for (const std::string& note : reply.notes) {
        record(client, Transcript::Direction::Note, note);
    }
    if (reply.breaksLink) {
        return false;
    }
    if (reply.delay.count() > 0) {
        const Link::Time due = now() + reply.delay;
        client.link->keepForLater(std::move(reply), due);
    } else {
        sendReply(client, std::move(reply));
    }
    return true;
}

void Server::sendReply(Client& client, Reply reply)
{
    if (reply.text.empty()) {
        return;
    }
    record(client, Transcript::Direction::Sent, reply.text);
    client.link->send(reply.text + (reply.isComplete ? "\n" : ""));
}

void Server::sendLateReplies(Client& client)
{
    for (Reply& reply : client.link->takeLateReplies(now())) {
        sendReply(client, std::move(reply));
    }
}

void Server::record(const Client& client, Transcript::Direction direction, const std::string& line)
{
    if (client.service == &m_instrument) {
        m_transcript.write(client.link->port(), direction, line);
    }
}

/// Adds our side of the pseudo-terminal as a client; opens a new line if the last one broke.
void Server::serveTerminal()
{
    std::string error;
    if (!m_terminal.hasStream() && !m_terminal.renew(error)) {
        return;
    }
    m_clients.push_back({std::make_unique<Link>(m_terminal.takeStream(), kTerminalPort,
                                                Link::LateReply::Dropped, Pace(m_bitsPerSecond)),
                         &m_instrument});
}

/// Opens or closes the ports as the service wants.
void Server::followReachability()
{
    const bool reachable = m_instrument.isReachable();
    m_listener.setOpen(reachable);
    m_terminal.setLinked(reachable);
}

} // namespace scnsim
