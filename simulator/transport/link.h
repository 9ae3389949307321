#pragma once

#include "posix/filedescriptor.h"
#include "transport/linebuffer.h"
#include "transport/lineservice.h"
#include "transport/pace.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace scnsim {

/// One client connection: its unanswered input and its unsent output. Never blocks.
class Link
{
public:
    /// A time of the steady clock.
    using Time = std::chrono::nanoseconds;

    /// What happens to a reply that the client has not read when its next line arrives.
    enum class LateReply {
        Kept,   ///< sent first; the line waits
        Dropped ///< the rest is dropped, as on a serial line nobody reads
    };

    /// @param descriptor a non-blocking stream
    /// @param port the name of the port in the transcript
    Link(scn::FileDescriptor descriptor, std::string port, LateReply lateReply,
         Pace pace = Pace(0));

    int descriptor() const { return m_descriptor.get(); }
    const std::string& port() const { return m_port; }

    /// Reads the waiting input.
    /// @return false once the peer has gone
    bool receive();

    LineBuffer& input() { return m_input; }

    /// Queues bytes and sends as many as the stream takes.
    void send(const std::string& bytes);

    /// Holds a reply back until `due`.
    void keepForLater(Reply reply, Time due) { m_lateReplies.emplace_back(due, std::move(reply)); }
    bool hasLateReplies() const { return !m_lateReplies.empty(); }
    /// Removes and returns the held replies that are due, in the order of their lines.
    std::vector<Reply> takeLateReplies(Time now);

    /// Sends as many queued bytes as the stream takes.
    /// @return false once the peer has gone
    bool flush();

    bool hasPendingOutput() const { return m_sent < m_output.size(); }

    /// Whether output waits for time to pass rather than for the stream.
    bool isPaced() const { return m_pace.isLimited(); }

    /// Drops a late reply, if this link drops them.
    /// @return whether one was dropped
    bool dropLateReply();

    /// Whether the next line may be taken from the client.
    bool takesInput() const;

private:
    scn::FileDescriptor m_descriptor;
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
