#pragma once

#include <string>

namespace scnsim {

/// Who answers the lines that come in. All calls come from the server's loop, one at a time.
class LineService
{
public:
    virtual ~LineService() = default;

    /// @param line a line without its terminator
    /// @return the reply without its terminator; empty for none
    virtual std::string answer(const std::string& line) = 0;

    /// A line was longer than a port takes and has been dropped.
    virtual void lineTooLong() = 0;

    /// A new line came before the reply to the last one had left; its rest has been dropped.
    virtual void replyInterrupted() = 0;

    /// Called several times a second, also while nothing comes in.
    virtual void tick() = 0;
};

} // namespace scnsim
