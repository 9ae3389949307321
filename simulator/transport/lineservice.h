#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace scnsim {

/// The reply to a line.
struct Reply
{
    /// The bytes without a terminator; empty sends nothing.
    std::string text;
    /// Whether a line feed follows.
    bool isComplete = true;
    /// How long the reply is held back. Lines that arrive meanwhile are answered meanwhile.
    std::chrono::milliseconds delay{0};
    /// Break the connection instead of replying.
    bool breaksLink = false;
    /// Notes for the transcript, beside the line itself.
    std::vector<std::string> notes;
};

/// Answers the lines that arrive. All calls come from the server's loop, one at a time.
class LineService
{
public:
    virtual ~LineService() = default;

    /// @param line a line without its terminator
    virtual Reply answer(const std::string& line) = 0;

    /// A line exceeded the limit and was dropped.
    virtual Reply lineTooLong() = 0;

    /// A new line arrived before the reply to the last one was sent; the rest of that reply was
    /// dropped.
    virtual void replyInterrupted() = 0;

    /// Called several times a second, even when nothing arrives.
    virtual void tick() = 0;

    /// Whether new clients may connect. Those already connected stay.
    virtual bool isReachable() = 0;

    /// Whether the client that has just connected may stay.
    virtual bool admitsClient() = 0;
};

} // namespace scnsim
