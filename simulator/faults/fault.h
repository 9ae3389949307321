#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace scnsim {

/// How the instrument misbehaves.
enum class FaultKind {
    Silence,   ///< the line is read and then nothing happens
    Delay,     ///< the reply leaves late
    Drop,      ///< the connection breaks before the line is carried out
    Refuse,    ///< nobody can connect
    Garbage,   ///< random bytes in place of the reply
    Truncate,  ///< the reply breaks off and its line feed never comes
    Shorten,   ///< the reply breaks off, its line feed comes
    Oversize,  ///< the reply is far too long
    BadRecord, ///< one record of a fetched batch is damaged
    Reject,    ///< the command is not carried out and an error is queued
    Elsewhere, ///< someone else is using the instrument
    ClockJump, ///< the instrument's clock jumps before the line is carried out
};

/// Form of a bad record; the value of FaultKind::BadRecord.
enum BadRecordForm {
    kBadMonth,     ///< the record in the middle has a month of 13
    kMissingUnit,  ///< the record in the middle has a value without a unit
    kMissingField, ///< the last record lacks its last field
};

/// One misbehaviour: what, on which lines and how often.
struct Fault
{
    FaultKind kind = FaultKind::Silence;
    /// Milliseconds of a delay, bytes of a spoilt reply, error number of a rejection,
    /// BadRecordForm, or seconds of a clock jump; unused by the others.
    double value = 0;
    /// The normalised lines it acts on: '*' matches any run of characters, everything else itself.
    std::string pattern = "*";
    /// How often it acts; none: until it is cleared.
    std::optional<int> count;
};

/// Reads "kind [value] [for pattern] [times count]", e.g. "delay 6000 for R? * times 1".
/// @return false with a text in error
bool parseFault(std::string_view text, Fault& fault, std::string& error);

/// The fault in the form that parseFault() reads.
std::string faultText(const Fault& fault);

/// The line as patterns see it: upper case, trimmed, without a leading colon, each run of blanks
/// reduced to one.
std::string normalizedLine(std::string_view line);

/// Whether the whole text fits the pattern.
bool matchesPattern(std::string_view pattern, std::string_view text);

} // namespace scnsim
