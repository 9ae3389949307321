#pragma once

#include "dialogue/arguments.h"
#include "scpi/errorqueue.h"

#include <optional>
#include <string>

namespace scnsim {

/// The registers that IEEE 488.2 wants beside the error queue.
struct StatusRegisters
{
    unsigned eventStatus = 0;
    unsigned eventEnable = 0;
    unsigned serviceEnable = 0;
};

/// What a command works on.
struct Session
{
    Instrument& instrument;
    ErrorQueue& errors;
    StatusRegisters& status;
    const std::string& identity;
    Instant now;
};

/// What became of a command or query.
struct Outcome
{
    ErrorCode error = ErrorCode::None;
    std::optional<std::string> answer;
};

inline Outcome done()
{
    return {};
}
inline Outcome refuse(ErrorCode error)
{
    return {error, std::nullopt};
}
inline Outcome outcomeOf(Refusal refusal)
{
    return refuse(errorFor(refusal));
}
inline Outcome answer(std::string text)
{
    return {ErrorCode::None, std::move(text)};
}

using Handler = Outcome (*)(Session&, Arguments&);

/// The handler of a query that takes no parameters.
template <std::string (*Text)(Session&)>
Outcome ask(Session& session, Arguments& arguments)
{
    return arguments.ok() ? answer(Text(session)) : refuse(arguments.error());
}

/// The handler of a command that takes no parameters.
template <void (*Action)(Session&)>
Outcome perform(Session& session, Arguments& arguments)
{
    if (!arguments.ok()) {
        return refuse(arguments.error());
    }
    Action(session);
    return done();
}

/// A header with what its command and its query do; a missing handler means that the instrument
/// has no such command or query.
struct CommandRow
{
    const char* spelling;
    Handler command;
    Handler query;
};

/// A header that sets and queries one numeric setting of channels.
struct OptionRow
{
    const char* spelling;
    Option option;
};

/// The command tables, one for each field of the instrument.
Facts<CommandRow> commonCommands();
Facts<CommandRow> systemCommands();
Facts<CommandRow> channelCommands();
Facts<CommandRow> scanCommands();
Facts<OptionRow> optionHeaders();

/// Sets an option of channels from a value and a channel list.
Outcome setOption(Session& session, Arguments& arguments, Option option);

/// Answers an option of each channel of a list, separated by commas.
Outcome queryOption(Session& session, Arguments& arguments, Option option);

} // namespace scnsim
