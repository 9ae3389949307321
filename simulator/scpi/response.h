#pragma once

#include <string>

namespace scnsim {

/// Answer formats on the wire, independent of the locale.

/// A setting: sign, one digit, six decimals, exponent, e.g. "+1.000000E+01".
std::string settingNumber(double value);

/// A count, a time or a reading: eight decimals, e.g. "+9.90000000E+37".
std::string longNumber(double value);

/// An integer with its sign, e.g. "+256", "+0".
std::string signedInteger(long long value);

/// "1" or "0".
std::string switchText(bool on);

/// The text in double quotes, a quote within it doubled.
std::string quoted(const std::string& text);

/// The content as a definite-length block: `#`, the number of digits of the length, the length in
/// bytes, the content.
std::string definiteBlock(const std::string& content);

} // namespace scnsim
