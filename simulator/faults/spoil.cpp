#include "faults/spoil.h"

#include "scpi/pieces.h"
#include "scpi/response.h"

#include <algorithm>
#include <charconv>
#include <random>
#include <string_view>
#include <vector>

namespace scnsim {

namespace {

/// Fields of a record with unit, absolute time, channel and alarm, and the position of the month.
constexpr std::size_t kFields = 9;
constexpr std::size_t kMonthField = 2;

/// Content of a definite-length block; none if the text is not one.
std::optional<std::string_view> blockContent(std::string_view text)
{
    if (text.size() < 2 || text[0] != '#' || text[1] < '1' || text[1] > '9') {
        return std::nullopt;
    }
    const auto digits = static_cast<std::size_t>(text[1] - '0');
    text.remove_prefix(2);
    if (text.size() < digits) {
        return std::nullopt;
    }
    std::size_t length = 0;
    std::from_chars(text.data(), text.data() + digits, length);
    text.remove_prefix(digits);
    return text.size() == length ? std::optional<std::string_view>(text) : std::nullopt;
}

} // namespace

std::string garbage(std::size_t bytes, std::uint64_t seed)
{
    // The standard fixes this generator's sequence.
    std::minstd_rand random(static_cast<std::minstd_rand::result_type>(seed));
    std::string text;
    while (text.size() < bytes) {
        const char c = static_cast<char>(random() >> 8 & 0xFF);
        if (c != '\n') {
            text += c;
        }
    }
    return text;
}

std::string oversized(const std::string& reply, std::size_t bytes)
{
    if (reply.empty() || reply.size() >= bytes) {
        return reply;
    }
    std::string text;
    while (text.size() < bytes) {
        text += reply;
    }
    text.resize(bytes);
    return text;
}

std::optional<std::string> withBadRecord(const std::string& reply, BadRecordForm form)
{
    const std::optional<std::string_view> content = blockContent(reply);
    if (!content) {
        return std::nullopt;
    }
    std::vector<std::string> fields = split(*content, ',');
    // A scan list also comes in a block, but does not start with a sign.
    const bool isBatch = !fields[0].empty() && fields.size() % kFields == 0 &&
                         (fields[0].front() == '+' || fields[0].front() == '-');
    if (!isBatch) {
        return std::nullopt;
    }
    const std::size_t middle = fields.size() / kFields / 2 * kFields;
    switch (form) {
    case kBadMonth:
        fields[middle + kMonthField] = "13";
        break;
    case kMissingUnit:
        fields[middle].resize(std::min(fields[middle].find(' '), fields[middle].size()));
        break;
    case kMissingField:
        fields.pop_back();
        break;
    }
    return definiteBlock(joined(fields, ','));
}

} // namespace scnsim
