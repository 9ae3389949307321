#pragma once

#include "dialogue/arguments.h"
#include "scpi/errorqueue.h"

#include <optional>
#include <string>

namespace scnsim {

/// The IEEE 488.2 registers beside the error queue.
struct StatusRegisters
{
    unsigned eventStatus = 0;
    unsigned eventEnable = 0;
    unsigned serviceEnable = 0;
};

/// What a command acts on.
struct Session
{
    Instrument& instrument;
    ErrorQueue& errors;
    StatusRegisters& status;
    const std::string& identity;
    Instant now;
};

/// The outcome of a command or query.
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

/// A header with its command and query handlers; a missing handler means there is no such command
/// or query.
struct CommandRow
{
    const char* spelling;
    Handler command;
    Handler query;
};

/// A header that sets and queries one numeric channel setting.
struct OptionRow
{
    const char* spelling;
    Option option;
};

/// The command tables, one per area of the instrument.
Facts<CommandRow> commonCommands();
Facts<CommandRow> systemCommands();
Facts<CommandRow> channelCommands();
Facts<CommandRow> scanCommands();
Facts<OptionRow> optionHeaders();

/// Sets a channel option from a value and a channel list.
Outcome setOption(Session& session, Arguments& arguments, Option option);

/// Answers a channel option for each channel of a list, separated by commas.
Outcome queryOption(Session& session, Arguments& arguments, Option option);

} // namespace scnsim
