#include "scpi/errors.h"

#include <algorithm>
#include <iterator>

namespace scnsim {

namespace {

struct ErrorRow
{
    ErrorCode code;
    const char* text;
};

constexpr ErrorRow kErrors[] = {
    {ErrorCode::None, "No error"},
    {ErrorCode::InvalidCharacter, "Invalid character"},
    {ErrorCode::SyntaxError, "Syntax error"},
    {ErrorCode::DataTypeError, "Data type error"},
    {ErrorCode::ParameterNotAllowed, "Parameter not allowed"},
    {ErrorCode::MissingParameter, "Missing parameter"},
    {ErrorCode::CommandHeaderError, "Command header error"},
    {ErrorCode::HeaderSeparatorError, "Header separator error"},
    {ErrorCode::MnemonicTooLong, "Program mnemonic too long"},
    {ErrorCode::UndefinedHeader, "Undefined header"},
    {ErrorCode::InvalidCharacterInNumber, "Invalid character in number"},
    {ErrorCode::ExponentTooLarge, "Exponent too large"},
    {ErrorCode::SuffixNotAllowed, "Suffix not allowed"},
    {ErrorCode::InvalidCharacterData, "Invalid character data"},
    {ErrorCode::InvalidStringData, "Invalid string data"},
    {ErrorCode::BlockDataNotAllowed, "Block data not allowed"},
    {ErrorCode::InvalidExpression, "Invalid expression"},
    {ErrorCode::TriggerIgnored, "Trigger ignored"},
    {ErrorCode::InitIgnored, "Init ignored"},
    {ErrorCode::SettingsConflict, "Settings conflict"},
    {ErrorCode::DataOutOfRange, "Data out of range"},
    {ErrorCode::TooMuchData, "Too much data"},
    {ErrorCode::IllegalParameterValue, "Illegal parameter value"},
    {ErrorCode::HardwareMissing, "Hardware missing"},
    {ErrorCode::OutOfMemory, "Out of memory"},
    {ErrorCode::QueueOverflow, "Queue overflow"},
    {ErrorCode::InputBufferOverrun, "Input buffer overrun"},
    {ErrorCode::QueryInterrupted, "Query INTERRUPTED"},
};

/// Indexed by the hundreds of the number, without its sign.
constexpr unsigned kEventBits[] = {0x00, 0x20, 0x10, 0x08, 0x04};

} // namespace

const char* errorText(ErrorCode code)
{
    for (const ErrorRow& row : kErrors) {
        if (row.code == code) {
            return row.text;
        }
    }
    return "Device-specific error";
}

bool isErrorNumber(int number)
{
    return std::any_of(std::begin(kErrors), std::end(kErrors), [number](const ErrorRow& row) {
        return row.code != ErrorCode::None && static_cast<int>(row.code) == number;
    });
}

unsigned errorEventBit(ErrorCode code)
{
    return kEventBits[static_cast<unsigned>(-static_cast<int>(code)) / 100];
}

} // namespace scnsim
