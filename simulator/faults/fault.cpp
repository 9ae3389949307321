#include "faults/fault.h"

#include "scpi/errors.h"
#include "scpi/headerpattern.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <system_error>
#include <vector>

namespace scnsim {

namespace {

constexpr double kLongestDelayMs = 3600000;
constexpr double kLongestReply = 10000000;
constexpr double kFarthestJumpS = 1e9;
constexpr double kMostTimes = 1000000000;

/// What follows the name of a kind.
enum class ValueForm { None, Whole, Decimal, Error, Record };

struct KindRow
{
    FaultKind kind;
    const char* name;
    ValueForm form;
    double minimum;
    double maximum;
    /// Default value; a kind without one requires it.
    std::optional<double> standard;
    const char* wanted;
};

constexpr const char* kBytes = "a number of bytes from 1 to 10000000";

const KindRow kKinds[] = {
    {FaultKind::Silence, "silence", ValueForm::None, 0, 0, 0, ""},
    {FaultKind::Delay, "delay", ValueForm::Whole, 1, kLongestDelayMs, std::nullopt,
     "milliseconds from 1 to 3600000"},
    {FaultKind::Drop, "drop", ValueForm::None, 0, 0, 0, ""},
    {FaultKind::Refuse, "refuse", ValueForm::None, 0, 0, 0, ""},
    {FaultKind::Garbage, "garbage", ValueForm::Whole, 1, kLongestReply, 64, kBytes},
    {FaultKind::Truncate, "truncate", ValueForm::Whole, 1, kLongestReply, 10, kBytes},
    {FaultKind::Shorten, "shorten", ValueForm::Whole, 1, kLongestReply, 10, kBytes},
    {FaultKind::Oversize, "oversize", ValueForm::Whole, 1, kLongestReply, 50000, kBytes},
    {FaultKind::BadRecord, "badrecord", ValueForm::Record, 0, 0, kBadMonth,
     "one of month, unit, field"},
    {FaultKind::Reject, "reject", ValueForm::Error, 0, 0,
     static_cast<double>(ErrorCode::SettingsConflict), "the number of an error"},
    {FaultKind::Elsewhere, "elsewhere", ValueForm::None, 0, 0, 0, ""},
    {FaultKind::ClockJump, "clock", ValueForm::Decimal, -kFarthestJumpS, kFarthestJumpS,
     std::nullopt, "seconds from -1e9 to 1e9"},
};

constexpr const char* kRecordForms[] = {"month", "unit", "field"};

const KindRow& rowOf(FaultKind kind)
{
    return kKinds[static_cast<std::size_t>(kind)];
}

const KindRow* kindNamed(const std::string& name)
{
    for (const KindRow& row : kKinds) {
        if (name == row.name) {
            return &row;
        }
    }
    return nullptr;
}

std::optional<double> numberFrom(const std::string& text)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return number;
}

std::optional<double> numberBetween(const std::string& text, double minimum, double maximum,
                                    bool whole)
{
    const std::optional<double> number = numberFrom(text);
    const bool fits = number && *number >= minimum && *number <= maximum &&
                      (!whole || std::floor(*number) == *number);
    return fits ? number : std::nullopt;
}

std::optional<double> recordForm(const std::string& text)
{
    double form = 0;
    for (const char* name : kRecordForms) {
        if (text == name) {
            return form;
        }
        ++form;
    }
    return std::nullopt;
}

std::optional<double> errorNumber(const std::string& text)
{
    const std::optional<double> number = numberBetween(text, -499, -100, true);
    const bool known = number && isErrorNumber(static_cast<int>(*number));
    return known ? number : std::nullopt;
}

std::optional<double> valueFrom(const KindRow& row, const std::string& text)
{
    switch (row.form) {
    case ValueForm::None:
        break;
    case ValueForm::Whole:
        return numberBetween(text, row.minimum, row.maximum, true);
    case ValueForm::Decimal:
        return numberBetween(text, row.minimum, row.maximum, false);
    case ValueForm::Error:
        return errorNumber(text);
    case ValueForm::Record:
        return recordForm(text);
    }
    return std::nullopt;
}

std::string valueText(const Fault& fault)
{
    const KindRow& row = rowOf(fault.kind);
    if (row.form == ValueForm::None) {
        return {};
    }
    if (row.form == ValueForm::Record) {
        return kRecordForms[static_cast<std::size_t>(fault.value)];
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", fault.value);
    return text;
}

std::vector<std::string> wordsOf(std::string_view text)
{
    std::vector<std::string> words;
    bool inWord = false;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\t';
        if (!blank && !inWord) {
            words.emplace_back();
        }
        if (!blank) {
            words.back() += c;
        }
        inWord = !blank;
    }
    return words;
}

/// Removes "times count" from the end.
bool takeCount(std::vector<std::string>& words, Fault& fault, std::string& error)
{
    const std::size_t size = words.size();
    if (size < 2 || words[size - 2] != "times") {
        return true;
    }
    const std::optional<double> count = numberBetween(words.back(), 1, kMostTimes, true);
    if (!count) {
        error = "times wants a whole number from 1";
        return false;
    }
    fault.count = static_cast<int>(*count);
    words.resize(size - 2);
    return true;
}

/// Removes "for pattern" from the end; the pattern runs to the end and may contain blanks.
bool takePattern(std::vector<std::string>& words, Fault& fault, std::string& error)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] != "for") {
            continue;
        }
        std::string pattern;
        for (std::size_t k = i + 1; k < words.size(); ++k) {
            pattern += (pattern.empty() ? "" : " ") + words[k];
        }
        fault.pattern = normalizedLine(pattern);
        words.resize(i);
        if (fault.pattern.empty()) {
            error = "for wants a pattern";
            return false;
        }
        return true;
    }
    return true;
}

/// Reads the kind and its value, which is all that is left.
bool takeKind(const std::vector<std::string>& words, Fault& fault, std::string& error)
{
    const KindRow* const row = words.empty() ? nullptr : kindNamed(words[0]);
    if (row == nullptr) {
        error = words.empty() ? "no fault is named" : "unknown fault " + words[0];
        return false;
    }
    fault.kind = row->kind;
    const std::optional<double> value =
        words.size() == 1 ? row->standard : valueFrom(*row, words[1]);
    if (value && words.size() <= 2) {
        fault.value = *value;
        return true;
    }
    error = row->form == ValueForm::None ? words[0] + " takes no value"
                                         : words[0] + " wants " + row->wanted;
    return false;
}

} // namespace

bool parseFault(std::string_view text, Fault& fault, std::string& error)
{
    Fault parsed;
    std::vector<std::string> words = wordsOf(text);
    if (!takeCount(words, parsed, error) || !takePattern(words, parsed, error) ||
        !takeKind(words, parsed, error)) {
        return false;
    }
    if (parsed.kind == FaultKind::Refuse && parsed.pattern != "*") {
        error = "refuse takes no pattern";
        return false;
    }
    // A clock that jumps on every line is rarely wanted.
    if (parsed.kind == FaultKind::ClockJump && !parsed.count) {
        parsed.count = 1;
    }
    fault = parsed;
    return true;
}

std::string faultText(const Fault& fault)
{
    std::string text = rowOf(fault.kind).name;
    const std::string value = valueText(fault);
    if (!value.empty()) {
        text += ' ' + value;
    }
    if (fault.pattern != "*") {
        text += " for " + fault.pattern;
    }
    if (fault.count) {
        text += " times " + std::to_string(*fault.count);
    }
    return text;
}

std::string normalizedLine(std::string_view line)
{
    std::string text;
    for (const std::string& word : wordsOf(line)) {
        text += (text.empty() ? "" : " ") + upperCase(word);
    }
    return !text.empty() && text.front() == ':' ? text.substr(1) : text;
}

bool matchesPattern(std::string_view pattern, std::string_view text)
{
    // Where to resume after a mismatch: behind the last asterisk, which then matches one more
    // character.
    std::size_t star = std::string_view::npos;
    std::size_t retry = 0;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            retry = t;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++retry;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

} // namespace scnsim
