#include "transport/link.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

namespace scnsim {

namespace {

constexpr std::size_t kReadSize = 16384;
/// Sent bytes are discarded in pieces of at least this size.
constexpr std::size_t kCompactAt = 1 << 18;
/// A client with more unread output than this is not read from.
constexpr std::size_t kMostPendingOutput = 1 << 20;

bool isTemporary(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

Link::Link(scn::FileDescriptor descriptor, std::string port, LateReply lateReply, Pace pace)
    : m_descriptor(std::move(descriptor))
    , m_port(std::move(port))
    , m_lateReply(lateReply)
    , m_pace(pace)
{
}

bool Link::receive()
{
    std::array<char, kReadSize> bytes;
    const ssize_t count = read(m_descriptor.get(), bytes.data(), bytes.size());
    if (count > 0) {
        m_input.append({bytes.data(), static_cast<std::size_t>(count)});
        return true;
    }
    return count < 0 && isTemporary(errno);
}

void Link::send(const std::string& bytes)
{
    m_output += bytes;
    flush();
}

std::vector<Reply> Link::takeLateReplies(Time now)
{
    std::vector<Reply> due;
    std::vector<std::pair<Time, Reply>> waiting;
    for (auto& [time, reply] : m_lateReplies) {
        if (time <= now) {
            due.push_back(std::move(reply));
        } else {
            waiting.emplace_back(time, std::move(reply));
        }
    }
    m_lateReplies = std::move(waiting);
    return due;
}

bool Link::flush()
{
    std::size_t allowance = m_pace.allowance(std::chrono::steady_clock::now().time_since_epoch());
    while (!m_gone && hasPendingOutput() && allowance > 0) {
        const std::size_t size = std::min(allowance, m_output.size() - m_sent);
        const ssize_t count = write(m_descriptor.get(), m_output.data() + m_sent, size);
        if (count < 0) {
            m_gone = !isTemporary(errno);
            break;
        }
        const auto written = static_cast<std::size_t>(count);
        m_sent += written;
        allowance -= written;
        m_pace.spend(written);
    }
    if (m_gone || !hasPendingOutput()) {
        m_output.clear();
        m_sent = 0;
    } else if (m_sent >= kCompactAt) {
        m_output.erase(0, m_sent);
        m_sent = 0;
    }
    return !m_gone;
}

bool Link::dropLateReply()
{
    if (m_lateReply == LateReply::Kept || !hasPendingOutput()) {
        return false;
    }
    m_output.clear();
    m_sent = 0;
    return true;
}

bool Link::takesInput() const
{
    return m_lateReply == LateReply::Dropped || m_output.size() - m_sent < kMostPendingOutput;
}

} // namespace scnsim
