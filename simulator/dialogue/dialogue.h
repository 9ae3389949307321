#pragma once

#include "dialogue/commands.h"
#include "scpi/message.h"

#include <string>
#include <string_view>
#include <vector>

namespace scnsim {

/// The instrument's language: takes a line, lets the instrument do what it says, and makes the
/// answer. What is refused leaves its number in the error queue, changes nothing and answers
/// nothing; the other commands of the same line are carried out all the same.
class Dialogue
{
public:
    /// @param identity the answer to *IDN?
    Dialogue(Instrument& instrument, std::string identity);

    /// @param line one line without its terminator
    /// @param now not earlier than at the call before
    /// @return the answers of the line's queries, joined by ";", without a terminator; empty if
    ///         there is nothing to answer
    std::string handle(std::string_view line, Instant now);

    /// Lets time pass without a line.
    void advance(Instant now);

    /// Puts an error into the queue that is not the fault of a command.
    void report(ErrorCode error);

private:
    Outcome carryOut(const MessageUnit& unit, std::vector<std::string>& path, Instant now);

    Instrument& m_instrument;
    std::string m_identity;
    ErrorQueue m_errors;
    StatusRegisters m_status;
};

} // namespace scnsim
