#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace scnsim {

/// What goes back for a line.
struct Reply
{
    /// The bytes without a terminator; nothing is sent for none.
    std::string text;
    /// Whether the line feed follows.
    bool isComplete = true;
    /// It leaves so much later; what comes in meanwhile is answered meanwhile.
    std::chrono::milliseconds delay{0};
    /// The connection breaks instead.
    bool breaksLink = false;
    /// What the transcript is to tell beside the line itself.
    std::vector<std::string> notes;
};

/// Who answers the lines that come in. All calls come from the server's loop, one at a time.
class LineService
{
public:
    virtual ~LineService() = default;

    /// @param line a line without its terminator
    virtual Reply answer(const std::string& line) = 0;

    /// A line was longer than a port takes and has been dropped.
    virtual Reply lineTooLong() = 0;

    /// A new line came before the reply to the last one had left; its rest has been dropped.
    virtual void replyInterrupted() = 0;

    /// Called several times a second, also while nothing comes in.
    virtual void tick() = 0;

    /// Whether clients may connect at all now. Those that are connected stay.
    virtual bool isReachable() = 0;

    /// Whether the client that has just connected may stay.
    virtual bool admitsClient() = 0;
};

} // namespace scnsim
