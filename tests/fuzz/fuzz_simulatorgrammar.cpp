#include "check.h"
#include "scpi/headerpattern.h"
#include "scpi/message.h"
#include "scpi/response.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace scnsim;

constexpr std::size_t kLongestWord = 12;
constexpr int kLargestChannel = 99999;

std::string writtenNumber(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string written(const Parameter& parameter)
{
    switch (parameter.type) {
    case Parameter::Type::Number:
        return writtenNumber(parameter.number);
    case Parameter::Type::Word:
        return parameter.text;
    case Parameter::Type::String:
        return quoted(parameter.text);
    case Parameter::Type::Expression:
        return '(' + parameter.text + ')';
    }
    return {};
}

std::string written(const MessageUnit& unit)
{
    std::string text = unit.rooted ? ":" : "";
    text += joinedHeader(unit.header);
    text += unit.query ? "?" : "";
    for (std::size_t i = 0; i < unit.parameters.size(); ++i) {
        text += i == 0 ? " " : ",";
        text += written(unit.parameters[i]);
    }
    return text;
}

std::string written(const std::vector<ChannelSpan>& spans)
{
    std::string text = "@";
    for (const ChannelSpan& span : spans) {
        text += text.size() > 1 ? "," : "";
        text += std::to_string(span.first) + ':' + std::to_string(span.last);
    }
    return text;
}

bool isWordCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

void checkHeader(const MessageUnit& unit)
{
    FUZZ_CHECK(!unit.header.empty());
    for (const std::string& node : unit.header) {
        const bool common = node.front() == '*';
        const std::string word = common ? node.substr(1) : node;
        FUZZ_CHECK(!common || (unit.header.size() == 1 && !unit.rooted));
        FUZZ_CHECK(!word.empty() && word.size() <= kLongestWord);
        FUZZ_CHECK(std::all_of(word.begin(), word.end(), isWordCharacter));
    }
}

void checkChannelList(const std::string& text)
{
    std::vector<ChannelSpan> spans;
    if (parseChannelList(text, spans) != ErrorCode::None) {
        return;
    }
    for (const ChannelSpan& span : spans) {
        FUZZ_CHECK(span.first >= 0 && span.first <= kLargestChannel);
        FUZZ_CHECK(span.last >= 0 && span.last <= kLargestChannel);
    }
    std::vector<ChannelSpan> again;
    FUZZ_CHECK(parseChannelList(written(spans), again) == ErrorCode::None);
    FUZZ_CHECK(written(again) == written(spans));
}

void checkParameter(const Parameter& parameter)
{
    if (parameter.type == Parameter::Type::Number) {
        FUZZ_CHECK(std::isfinite(parameter.number));
    }
    if (parameter.type == Parameter::Type::Expression) {
        checkChannelList(parameter.text);
    }
}

void checkSame(const MessageUnit& one, const MessageUnit& other)
{
    FUZZ_CHECK(other.error == ErrorCode::None);
    FUZZ_CHECK(one.header == other.header);
    FUZZ_CHECK(one.rooted == other.rooted && one.query == other.query);
    FUZZ_CHECK(one.parameters.size() == other.parameters.size());
    for (std::size_t i = 0; i < one.parameters.size(); ++i) {
        FUZZ_CHECK(one.parameters[i].type == other.parameters[i].type);
        if (one.parameters[i].type == Parameter::Type::Number) {
            FUZZ_CHECK(one.parameters[i].number == other.parameters[i].number);
        } else {
            FUZZ_CHECK(one.parameters[i].text == other.parameters[i].text);
        }
    }
}

} // namespace

/// The bytes are a line. Its well-formed parts, written out plainly, parse to the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    const std::vector<MessageUnit> units = parseMessage(line);
    FUZZ_CHECK(units.size() <=
               static_cast<std::size_t>(std::count(line.begin(), line.end(), ';')) + 1);

    std::vector<MessageUnit> wellFormed;
    std::string plain;
    for (const MessageUnit& unit : units) {
        if (unit.error != ErrorCode::None) {
            continue;
        }
        checkHeader(unit);
        std::for_each(unit.parameters.begin(), unit.parameters.end(), checkParameter);
        plain += (plain.empty() ? "" : ";") + written(unit);
        wellFormed.push_back(unit);
    }
    const std::vector<MessageUnit> again = parseMessage(plain);
    FUZZ_CHECK(again.size() == wellFormed.size());
    for (std::size_t i = 0; i < again.size(); ++i) {
        checkSame(wellFormed[i], again[i]);
    }
    return 0;
}
