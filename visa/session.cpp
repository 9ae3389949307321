#include "visa/session.h"

#include <algorithm>
#include <cstring>

namespace scn::visa {
namespace {

/// Defaults of the standard for a new session.
constexpr ViUInt32 kDefaultTimeoutMs = 2000;
constexpr char kDefaultTerminator = '\n';

constexpr std::size_t kChunkSize = 16384;

/// More than a kernel buffers for one connection: an instrument that never stops sending must not
/// block a write.
constexpr std::size_t kMostDiscardedBytes = 16U << 20U;

/// How often a waiting writer checks whether it is its turn.
constexpr std::chrono::milliseconds kTurnPoll{2};

/// The status of a wait after which there is nothing to do.
std::optional<ViStatus> statusOfWait(Transport::Wait wait)
{
    switch (wait) {
    case Transport::Wait::TimedOut:
        return VI_ERROR_TMO;
    case Transport::Wait::Interrupted:
        return VI_ERROR_ABORT;
    case Transport::Wait::Failed:
        return VI_ERROR_SYSTEM_ERROR;
    case Transport::Wait::Ready:
    case Transport::Wait::HungUp:
        break;
    }
    return std::nullopt;
}

} // namespace

/// The right to write, held by one thread at a time so that messages never mix on the wire.
class Session::WriteTurn
{
public:
    WriteTurn(Session& session, const Deadline& deadline)
        : m_session(session)
    {
        while (!m_failure && !(m_held = take())) {
            const Transport::Wait wait = m_session.m_transport->wait(Transport::Direction::Neither,
                                                                     deadline.within(kTurnPoll));
            if (wait != Transport::Wait::TimedOut || deadline.passed()) {
                m_failure = statusOfWait(wait);
            }
        }
    }

    ~WriteTurn()
    {
        if (m_held) {
            const std::lock_guard<std::mutex> lock(m_session.m_mutex);
            m_session.m_writing = false;
        }
    }

    WriteTurn(const WriteTurn&) = delete;
    WriteTurn& operator=(const WriteTurn&) = delete;

    /// Why the turn was not granted; empty if it was.
    std::optional<ViStatus> failure() const { return m_failure; }

private:
    bool take()
    {
        const std::lock_guard<std::mutex> lock(m_session.m_mutex);
        if (m_session.m_writing) {
            return false;
        }
        m_session.m_writing = true;
        return true;
    }

    Session& m_session;
    std::optional<ViStatus> m_failure;
    bool m_held = false;
};

Session::Session(std::unique_ptr<Transport> transport)
    : m_transport(std::move(transport))
    , m_timeoutMs(kDefaultTimeoutMs)
    , m_terminator(kDefaultTerminator)
{
}

Session::~Session() = default;

ViStatus Session::setAttribute(ViAttr attribute, ViAttrState value)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    switch (attribute) {
    case VI_ATTR_TMO_VALUE:
        m_timeoutMs = static_cast<ViUInt32>(value);
        return VI_SUCCESS;
    case VI_ATTR_TERMCHAR:
        if (value > 0xFF) {
            return VI_ERROR_NSUP_ATTR_STATE;
        }
        m_terminator = static_cast<char>(static_cast<unsigned char>(value));
        return VI_SUCCESS;
    case VI_ATTR_TERMCHAR_EN:
        if (value > 1) {
            return VI_ERROR_NSUP_ATTR_STATE;
        }
        m_terminatorEnabled = value == 1;
        return VI_SUCCESS;
    default:
        return m_transport->setSerialAttribute(attribute, value);
    }
}

ViStatus Session::read(char* buffer, std::size_t size, std::size_t& received)
{
    const Deadline deadline = nextDeadline();
    bool hungUp = false;
    for (;;) {
        if (const auto status = tryRead(buffer, size, received, hungUp)) {
            return *status;
        }
        const Transport::Wait wait = m_transport->wait(Transport::Direction::Input, deadline);
        if (const auto status = statusOfWait(wait)) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            takeRest(buffer, size, received);
            return *status;
        }
        hungUp = wait == Transport::Wait::HungUp;
    }
}

ViStatus Session::write(const char* bytes, std::size_t size, std::size_t& sent)
{
    const Deadline deadline = nextDeadline();
    sent = 0;
    const WriteTurn turn(*this, deadline);
    if (turn.failure()) {
        return *turn.failure();
    }
    if (const ViStatus status = discardInput(); status != VI_SUCCESS) {
        return status;
    }
    bool hungUp = false;
    for (;;) {
        if (const auto status = tryWrite(bytes, size, sent, hungUp)) {
            return *status;
        }
        const Transport::Wait wait = m_transport->wait(Transport::Direction::Output, deadline);
        if (const auto status = statusOfWait(wait)) {
            return *status;
        }
        hungUp = wait == Transport::Wait::HungUp;
    }
}

void Session::close()
{
    m_transport->interrupt();
}

Deadline Session::nextDeadline() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return Deadline::fromTimeout(m_timeoutMs);
}

/// Reads input until a message is complete. Empty if more has to come.
std::optional<ViStatus> Session::tryRead(char* buffer, std::size_t size, std::size_t& received,
                                         bool hungUp)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Transport::State state = Transport::State::Moved;
    while (state == Transport::State::Moved) {
        if (const auto status = takeMessage(buffer, size, received)) {
            return status;
        }
        state = fetchInput();
    }
    if (state == Transport::State::Nothing && !hungUp) {
        return std::nullopt;
    }
    takeRest(buffer, size, received);
    return failure(state == Transport::State::Nothing ? Transport::State::Lost : state);
}

/// Hands over a message if the input holds a complete one.
std::optional<ViStatus> Session::takeMessage(char* buffer, std::size_t size, std::size_t& received)
{
    const std::size_t available = std::min(size, m_input.size());
    if (m_terminatorEnabled) {
        const void* const end = std::memchr(m_input.data(), m_terminator, available);
        if (end) {
            const auto offset = static_cast<const char*>(end) - m_input.data();
            take(buffer, static_cast<std::size_t>(offset) + 1, received);
            return VI_SUCCESS_TERM_CHAR;
        }
    }
    if (m_endsMessage && available == m_input.size()) {
        take(buffer, available, received);
        return VI_SUCCESS;
    }
    if (available < size) {
        return std::nullopt;
    }
    take(buffer, size, received);
    return VI_SUCCESS_MAX_CNT;
}

void Session::take(char* buffer, std::size_t size, std::size_t& received)
{
    std::copy_n(m_input.data(), size, buffer);
    m_input.erase(0, size);
    m_endsMessage = m_endsMessage && !m_input.empty();
    received = size;
}

void Session::takeRest(char* buffer, std::size_t size, std::size_t& received)
{
    take(buffer, std::min(size, m_input.size()), received);
}

/// Appends up to one chunk of pending bytes to the input.
Transport::State Session::fetchInput()
{
    if (m_lost) {
        return Transport::State::Lost;
    }
    char chunk[kChunkSize];
    const Transport::Result result = m_transport->readSome(chunk, sizeof chunk);
    if (result.state == Transport::State::Moved) {
        m_input.append(chunk, result.count);
        m_endsMessage = result.endsMessage;
    }
    return result.state;
}

/// Drops the pending input, here and in the operating system.
ViStatus Session::discardInput()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t discarded = 0; discarded < kMostDiscardedBytes;) {
        forgetInput();
        const Transport::State state = fetchInput();
        if (state == Transport::State::Nothing) {
            return VI_SUCCESS;
        }
        if (state != Transport::State::Moved) {
            return failure(state);
        }
        discarded += m_input.size();
    }
    forgetInput();
    return VI_SUCCESS;
}

void Session::forgetInput()
{
    m_input.clear();
    m_endsMessage = false;
}

/// Writes until everything has gone out. Empty if the connection accepts no more for now.
std::optional<ViStatus> Session::tryWrite(const char* bytes, std::size_t size, std::size_t& sent,
                                          bool hungUp)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    while (sent < size) {
        const Transport::Result result = m_transport->writeSome(bytes + sent, size - sent);
        if (result.state == Transport::State::Nothing && !hungUp) {
            return std::nullopt;
        }
        if (result.state != Transport::State::Moved) {
            return failure(result.state == Transport::State::Nothing ? Transport::State::Lost
                                                                     : result.state);
        }
        sent += result.count;
    }
    return VI_SUCCESS;
}

/// The status of a connection that has failed. A lost one stays lost.
ViStatus Session::failure(Transport::State state)
{
    if (state != Transport::State::Lost) {
        return VI_ERROR_IO;
    }
    m_lost = true;
    return VI_ERROR_CONN_LOST;
}

} // namespace scn::visa
