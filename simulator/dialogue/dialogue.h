#pragma once

#include "dialogue/commands.h"
#include "scpi/message.h"

#include <string>
#include <string_view>
#include <vector>

namespace scnsim {

/// The command language: takes a line, has the instrument carry it out, and returns the answer. A
/// refused command puts its number into the error queue, changes nothing and answers nothing; the
/// rest of the line is still carried out.
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

    /// Queues an error that no command caused.
    void report(ErrorCode error);

private:
    CommandResult carryOut(const MessageUnit& unit, std::vector<std::string>& path, Instant now);

    Instrument& m_instrument;
    std::string m_identity;
    ErrorQueue m_errors;
    StatusRegisters m_status;
};

} // namespace scnsim
