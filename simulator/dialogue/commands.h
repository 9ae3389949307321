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
struct CommandContext
{
    Instrument& instrument;
    ErrorQueue& errors;
    StatusRegisters& status;
    const std::string& identity;
    Instant now;
};

/// The outcome of a command or query.
struct CommandResult
{
    ErrorCode error = ErrorCode::None;
    std::optional<std::string> answer;
};

inline CommandResult done()
{
    return {};
}
inline CommandResult refuse(ErrorCode error)
{
    return {error, std::nullopt};
}
inline CommandResult outcomeOf(Refusal refusal)
{
    return refuse(errorFor(refusal));
}
inline CommandResult answer(std::string text)
{
    return {ErrorCode::None, std::move(text)};
}

using Handler = CommandResult (*)(CommandContext&, Arguments&);

/// The handler of a query that takes no parameters.
template <std::string (*Text)(CommandContext&)>
CommandResult ask(CommandContext& context, Arguments& arguments)
{
    return arguments.ok() ? answer(Text(context)) : refuse(arguments.error());
}

/// The handler of a command that takes no parameters.
template <void (*Action)(CommandContext&)>
CommandResult perform(CommandContext& context, Arguments& arguments)
{
    if (!arguments.ok()) {
        return refuse(arguments.error());
    }
    Action(context);
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
struct OptionHeader
{
    const char* spelling;
    Option option;
};

/// The command tables, one per area of the instrument.
Facts<CommandRow> commonCommands();
Facts<CommandRow> systemCommands();
Facts<CommandRow> channelCommands();
Facts<CommandRow> scanCommands();
Facts<OptionHeader> optionHeaders();

/// Sets a channel option from a value and a channel list.
CommandResult setOption(CommandContext& context, Arguments& arguments, Option option);

/// Answers a channel option for each channel of a list, separated by commas.
CommandResult queryOption(CommandContext& context, Arguments& arguments, Option option);

} // namespace scnsim
