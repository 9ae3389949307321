#pragma once

namespace scnsim {

/// The SCPI error numbers that the instrument uses. The hundreds give the class: -1xx command, -2xx
/// execution, -3xx device, -4xx query error.
enum class ErrorCode : int {
    None = 0,
    InvalidCharacter = -101,
    SyntaxError = -102,
    DataTypeError = -104,
    ParameterNotAllowed = -108,
    MissingParameter = -109,
    CommandHeaderError = -110,
    HeaderSeparatorError = -111,
    MnemonicTooLong = -112,
    UndefinedHeader = -113,
    InvalidCharacterInNumber = -121,
    ExponentTooLarge = -123,
    SuffixNotAllowed = -138,
    InvalidCharacterData = -141,
    InvalidStringData = -151,
    BlockDataNotAllowed = -168,
    InvalidExpression = -171,
    TriggerIgnored = -211,
    InitIgnored = -213,
    SettingsConflict = -221,
    DataOutOfRange = -222,
    TooMuchData = -223,
    IllegalParameterValue = -224,
    HardwareMissing = -241,
    OutOfMemory = -321,
    QueueOverflow = -350,
    InputBufferOverrun = -363,
    QueryInterrupted = -410,
};

/// The standard's text for a number.
const char* errorText(ErrorCode code);

/// Whether the list has an error of this number.
bool isErrorNumber(int number);

/// The bit of the standard event status register that an error of this number sets; 0 for none.
unsigned errorEventBit(ErrorCode code);

} // namespace scnsim
