#pragma once

#include "transport/descriptor.h"
#include "transport/linebuffer.h"
#include "transport/lineservice.h"
#include "transport/pace.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace scnsim {

/// One connection with a client: what came in and is not yet answered, and what is to go out and
/// has not yet left. It never blocks.
class Link
{
public:
    /// A time of the steady clock.
    using Time = std::chrono::nanoseconds;

    /// What happens to a reply that the client has not taken when its next line comes.
    enum class LateReply {
        Kept,   ///< it goes out first; the line waits
        Dropped ///< its rest is dropped, as on a serial line whose reader went away
    };

    /// @param descriptor a non-blocking stream
    /// @param port the name of the port in the transcript
    Link(Descriptor descriptor, std::string port, LateReply lateReply, Pace pace = Pace(0));

    int descriptor() const { return m_descriptor.number(); }
    const std::string& port() const { return m_port; }

    /// Reads what has come in.
    /// @return false once the peer has gone
    bool receive();

    LineBuffer& input() { return m_input; }

    /// Adds bytes to what is to go out and sends what the stream takes.
    void send(const std::string& bytes);

    /// Keeps a reply that is to leave at a later time.
    void keepForLater(Reply reply, Time due) { m_lateReplies.emplace_back(due, std::move(reply)); }
    bool hasLateReplies() const { return !m_lateReplies.empty(); }
    /// Gives away the kept replies whose time has come, in the order of their lines.
    std::vector<Reply> takeLateReplies(Time now);

    /// Sends what the stream takes.
    /// @return false once the peer has gone
    bool flush();

    bool hasPendingOutput() const { return m_sent < m_output.size(); }

    /// Whether what is to go out waits for time to pass, not for the stream.
    bool isPaced() const { return m_pace.isLimited(); }

    /// Drops a late reply if this link does so.
    /// @return whether one was dropped
    bool dropLateReply();

    /// Whether another line may be taken from the client now.
    bool takesInput() const;

private:
    Descriptor m_descriptor;
    std::string m_port;
    LateReply m_lateReply;
    Pace m_pace;
    LineBuffer m_input;
    std::string m_output;
    std::size_t m_sent = 0;
    std::vector<std::pair<Time, Reply>> m_lateReplies;
    bool m_gone = false;
};

} // namespace scnsim
