#pragma once

#include "scpi/errors.h"

#include <string>
#include <string_view>
#include <vector>

namespace scnsim {

/// One parameter of a command, classified by its first character.
struct Parameter
{
    enum class Type { Number, Word, String, Expression };

    Type type = Type::Word;
    /// A word in upper case, a string without its quotes, an expression without its parentheses.
    std::string text;
    double number = 0;
};

/// One command or query of a line.
struct MessageUnit
{
    /// Other than None: the unit is malformed, and only this field is valid.
    ErrorCode error = ErrorCode::None;
    /// Header words in upper case; a common command is one word with its asterisk.
    std::vector<std::string> header;
    /// The header began with a colon, so it starts at the root of the command tree.
    bool rooted = false;
    bool query = false;
    std::vector<Parameter> parameters;
};

/// Splits a line, without its terminator, into its units. It never fails as a whole: a malformed
/// unit carries its error, blank units are skipped.
std::vector<MessageUnit> parseMessage(std::string_view line);

/// One entry of a channel list: a channel, or a range of channels with both ends included.
struct ChannelSpan
{
    int first = 0;
    int last = 0;
};

/// Parses the content of a channel list's parentheses, "@101:103,105" or just "@".
/// @return InvalidExpression if the text is no channel list
ErrorCode parseChannelList(std::string_view text, std::vector<ChannelSpan>& spans);

} // namespace scnsim
