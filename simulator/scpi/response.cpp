#include "scpi/response.h"

#include <cstdio>

namespace scnsim {

namespace {

std::string exponential(const char* format, double value)
{
    char text[32];
    // A negative zero would go out as "-0"; adding a zero makes it positive.
    std::snprintf(text, sizeof text, format, value + 0.0);
    return text;
}

} // namespace

std::string settingNumber(double value)
{
    return exponential("%+.6E", value);
}

std::string longNumber(double value)
{
    return exponential("%+.8E", value);
}

std::string signedInteger(long long value)
{
    const std::string digits = std::to_string(value);
    return value < 0 ? digits : "+" + digits;
}

std::string switchText(bool on)
{
    return on ? "1" : "0";
}

std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text) {
        result += c;
        if (c == '"') {
            result += c;
        }
    }
    result += '"';
    return result;
}

std::string definiteBlock(const std::string& content)
{
    const std::string length = std::to_string(content.size());
    return "#" + std::to_string(length.size()) + length + content;
}

} // namespace scnsim
