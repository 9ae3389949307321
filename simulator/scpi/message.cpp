#include "scpi/message.h"

#include "scpi/headerpattern.h"

#include <charconv>
#include <system_error>

namespace scnsim {

namespace {

/// The standard's limit for one word of a header.
constexpr std::size_t kLongestMnemonic = 12;
constexpr std::size_t kLongestChannelNumber = 5;

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isWordCharacter(char c)
{
    return isLetter(c) || isDigit(c) || c == '_';
}
bool isPrintable(char c)
{
    return c >= ' ' && c <= '~';
}
bool isQuote(char c)
{
    return c == '"' || c == '\'';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// Splits at separators outside quotes and parentheses.
std::vector<std::string_view> splitOutside(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    std::size_t begin = 0;
    char quote = 0;
    bool inParentheses = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (isQuote(c)) {
            quote = c;
        } else if (c == '(' || c == ')') {
            inParentheses = c == '(';
        } else if (c == separator && !inParentheses) {
            pieces.push_back(text.substr(begin, i - begin));
            begin = i + 1;
        }
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

ErrorCode checkWord(const std::string& word)
{
    if (word.empty() || isDigit(word.front())) {
        return ErrorCode::CommandHeaderError;
    }
    if (word.size() > kLongestMnemonic) {
        return ErrorCode::MnemonicTooLong;
    }
    for (const char c : word) {
        if (!isWordCharacter(c)) {
            return isPrintable(c) ? ErrorCode::HeaderSeparatorError : ErrorCode::InvalidCharacter;
        }
    }
    return ErrorCode::None;
}

ErrorCode parseHeader(std::string_view text, MessageUnit& unit)
{
    if (text.back() == '?') {
        unit.query = true;
        text.remove_suffix(1);
    }
    if (!text.empty() && text.front() == '*') {
        const std::string word = upperCase(text.substr(1));
        unit.header = {"*" + word};
        return checkWord(word);
    }
    if (!text.empty() && text.front() == ':') {
        unit.rooted = true;
        text.remove_prefix(1);
    }
    unit.header = headerNodes(text);
    for (const std::string& word : unit.header) {
        const ErrorCode error = checkWord(word);
        if (error != ErrorCode::None) {
            return error;
        }
    }
    return ErrorCode::None;
}

ErrorCode parseString(std::string_view text, Parameter& parameter)
{
    const char quote = text.front();
    std::size_t i = 1;
    while (i < text.size()) {
        const char c = text[i];
        if (c == quote) {
            const bool doubled = i + 1 < text.size() && text[i + 1] == quote;
            if (!doubled) {
                break;
            }
            ++i;
        }
        if (!isPrintable(c)) {
            return ErrorCode::InvalidStringData;
        }
        parameter.text += c;
        ++i;
    }
    parameter.type = Parameter::Type::String;
    return i + 1 == text.size() ? ErrorCode::None : ErrorCode::InvalidStringData;
}

ErrorCode parseNumber(std::string_view text, Parameter& parameter)
{
    parameter.type = Parameter::Type::Number;
    const bool negative = text.front() == '-';
    const std::string_view magnitude = negative || text.front() == '+' ? text.substr(1) : text;
    if (magnitude.empty() || (!isDigit(magnitude.front()) && magnitude.front() != '.')) {
        return ErrorCode::InvalidCharacterInNumber;
    }
    const char* const end = magnitude.data() + magnitude.size();
    double value = 0;
    const std::from_chars_result result = std::from_chars(magnitude.data(), end, value);
    parameter.number = negative ? -value : value;
    if (result.ec == std::errc::result_out_of_range) {
        return ErrorCode::ExponentTooLarge;
    }
    if (result.ec != std::errc()) {
        return ErrorCode::InvalidCharacterInNumber;
    }
    if (result.ptr == end) {
        return ErrorCode::None;
    }
    return isLetter(*result.ptr) || isBlank(*result.ptr) ? ErrorCode::SuffixNotAllowed
                                                         : ErrorCode::InvalidCharacterInNumber;
}

ErrorCode parseWord(std::string_view text, Parameter& parameter)
{
    parameter.type = Parameter::Type::Word;
    parameter.text = upperCase(text);
    for (const char c : text) {
        if (!isWordCharacter(c)) {
            return ErrorCode::InvalidCharacterData;
        }
    }
    return ErrorCode::None;
}

ErrorCode parseExpression(std::string_view text, Parameter& parameter)
{
    parameter.type = Parameter::Type::Expression;
    if (text.size() < 2 || text.back() != ')') {
        return ErrorCode::InvalidExpression;
    }
    parameter.text = std::string(text.substr(1, text.size() - 2));
    return ErrorCode::None;
}

ErrorCode parseParameter(std::string_view text, Parameter& parameter)
{
    if (text.empty()) {
        return ErrorCode::SyntaxError;
    }
    const char first = text.front();
    if (isQuote(first)) {
        return parseString(text, parameter);
    }
    if (first == '(') {
        return parseExpression(text, parameter);
    }
    if (first == '#') {
        return ErrorCode::BlockDataNotAllowed;
    }
    if (isDigit(first) || first == '+' || first == '-' || first == '.') {
        return parseNumber(text, parameter);
    }
    return isLetter(first) ? parseWord(text, parameter) : ErrorCode::InvalidCharacter;
}

MessageUnit parseUnit(std::string_view text)
{
    MessageUnit unit;
    std::size_t headerEnd = 0;
    while (headerEnd < text.size() && !isBlank(text[headerEnd])) {
        ++headerEnd;
    }
    unit.error = parseHeader(text.substr(0, headerEnd), unit);
    const std::string_view rest = trimmed(text.substr(headerEnd));
    if (unit.error != ErrorCode::None || rest.empty()) {
        return unit;
    }
    for (const std::string_view piece : splitOutside(rest, ',')) {
        Parameter parameter;
        unit.error = parseParameter(trimmed(piece), parameter);
        if (unit.error != ErrorCode::None) {
            return unit;
        }
        unit.parameters.push_back(std::move(parameter));
    }
    return unit;
}

/// Takes a channel number from the front of the text.
bool takeChannel(std::string_view& text, int& channel)
{
    std::size_t digits = 0;
    while (digits < text.size() && isDigit(text[digits])) {
        ++digits;
    }
    if (digits == 0 || digits > kLongestChannelNumber) {
        return false;
    }
    std::from_chars(text.data(), text.data() + digits, channel);
    text = trimmed(text.substr(digits));
    return true;
}

} // namespace

std::vector<MessageUnit> parseMessage(std::string_view line)
{
    std::vector<MessageUnit> units;
    for (const std::string_view piece : splitOutside(line, ';')) {
        const std::string_view text = trimmed(piece);
        if (!text.empty()) {
            units.push_back(parseUnit(text));
        }
    }
    return units;
}

ErrorCode parseChannelList(std::string_view text, std::vector<ChannelSpan>& spans)
{
    text = trimmed(text);
    if (text.empty() || text.front() != '@') {
        return ErrorCode::InvalidExpression;
    }
    text = trimmed(text.substr(1));
    while (!text.empty()) {
        ChannelSpan span;
        if (!takeChannel(text, span.first)) {
            return ErrorCode::InvalidExpression;
        }
        span.last = span.first;
        if (!text.empty() && text.front() == ':') {
            text = trimmed(text.substr(1));
            if (!takeChannel(text, span.last)) {
                return ErrorCode::InvalidExpression;
            }
        }
        spans.push_back(span);
        if (text.empty()) {
            break;
        }
        if (text.front() != ',' || text.size() == 1) {
            return ErrorCode::InvalidExpression;
        }
        text = trimmed(text.substr(1));
    }
    return ErrorCode::None;
}

} // namespace scnsim
