#include "dialogue/arguments.h"

#include "scpi/headerpattern.h"

#include <cmath>

namespace scnsim {

namespace {

constexpr const char* kSwitchWords[] = {"OFF", "ON"};
constexpr const char* kLimitWords[] = {"MINimum", "MAXimum", "DEFault"};
constexpr const char* kCountWords[] = {"MINimum", "MAXimum", "DEFault", "INFinity"};

constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

std::size_t indexOf(Facts<const char*> words, const std::string& word)
{
    for (std::size_t i = 0; i < words.size; ++i) {
        if (Mnemonic(words.data[i]).matches(word)) {
            return i;
        }
    }
    return kNotFound;
}

struct RefusalRow
{
    Refusal refusal;
    ErrorCode error;
};

constexpr RefusalRow kRefusals[] = {
    {Refusal::None, ErrorCode::None},
    {Refusal::OutOfRange, ErrorCode::DataOutOfRange},
    {Refusal::IllegalValue, ErrorCode::IllegalParameterValue},
    {Refusal::Conflict, ErrorCode::SettingsConflict},
    {Refusal::NoModule, ErrorCode::HardwareMissing},
    {Refusal::AlreadyRunning, ErrorCode::InitIgnored},
    {Refusal::NotWaiting, ErrorCode::TriggerIgnored},
    {Refusal::TooMany, ErrorCode::TooMuchData},
};

} // namespace

ErrorCode errorFor(Refusal refusal)
{
    for (const RefusalRow& row : kRefusals) {
        if (row.refusal == refusal) {
            return row.error;
        }
    }
    return ErrorCode::None;
}

double Arguments::number(double minimum, double maximum)
{
    const Parameter* const parameter = take(Parameter::Type::Number);
    return parameter != nullptr ? within(minimum, maximum, parameter->number) : minimum;
}

double Arguments::number(double minimum, double maximum, double standard)
{
    return within(minimum, maximum, numberOrLimit(minimum, maximum, standard));
}

double Arguments::numberOrLimit(double minimum, double maximum, double standard)
{
    if (hasMore() && m_parameters[m_next].type == Parameter::Type::Word) {
        const double values[] = {minimum, maximum, standard};
        return values[word(kLimitWords)];
    }
    const Parameter* const parameter = take(Parameter::Type::Number);
    return parameter != nullptr ? parameter->number : minimum;
}

int Arguments::integer(int minimum, int maximum)
{
    return static_cast<int>(std::lround(number(minimum, maximum)));
}

std::optional<int> Arguments::countOrInfinity(int minimum, int maximum)
{
    if (hasMore() && m_parameters[m_next].type == Parameter::Type::Word) {
        const std::optional<int> values[] = {minimum, maximum, std::nullopt, std::nullopt};
        return values[word(kCountWords)];
    }
    if (hasMore() && m_parameters[m_next].number >= kOverload) {
        take(Parameter::Type::Number);
        return std::nullopt;
    }
    return integer(minimum, maximum);
}

bool Arguments::onOff()
{
    if (hasMore() && m_parameters[m_next].type == Parameter::Type::Word) {
        return word(kSwitchWords) == 1;
    }
    const Parameter* const parameter = take(Parameter::Type::Number);
    return parameter != nullptr && std::round(parameter->number) != 0;
}

std::size_t Arguments::word(Facts<const char*> words)
{
    const Parameter* const parameter = take(Parameter::Type::Word);
    if (parameter == nullptr) {
        return 0;
    }
    const std::size_t index = indexOf(words, parameter->text);
    if (index == kNotFound) {
        fail(ErrorCode::IllegalParameterValue);
        return 0;
    }
    return index;
}

std::string Arguments::text(std::size_t longest)
{
    const Parameter* const parameter = take(Parameter::Type::String);
    if (parameter == nullptr) {
        return {};
    }
    if (parameter->text.size() > longest) {
        fail(ErrorCode::TooMuchData);
        return {};
    }
    return parameter->text;
}

std::vector<int> Arguments::channels(const Instrument& instrument)
{
    std::vector<int> channels = channelsOrNone(instrument);
    if (m_error == ErrorCode::None && channels.empty()) {
        fail(ErrorCode::InvalidExpression);
    }
    return channels;
}

std::vector<int> Arguments::channelsOrNone(const Instrument& instrument)
{
    std::vector<int> channels;
    const Parameter* const parameter = take(Parameter::Type::Expression);
    if (parameter == nullptr) {
        return channels;
    }
    std::vector<ChannelSpan> spans;
    fail(parseChannelList(parameter->text, spans));
    for (const ChannelSpan& span : spans) {
        fail(errorFor(instrument.expand(span.first, span.last, channels)));
    }
    return channels;
}

bool Arguments::ok()
{
    if (hasMore()) {
        fail(ErrorCode::ParameterNotAllowed);
    }
    return m_error == ErrorCode::None;
}

double Arguments::within(double minimum, double maximum, double number)
{
    if (number < minimum || number > maximum) {
        fail(ErrorCode::DataOutOfRange);
        return minimum;
    }
    return number;
}

const Parameter* Arguments::take(Parameter::Type type)
{
    const Parameter* const parameter = take();
    if (parameter != nullptr && parameter->type != type) {
        fail(ErrorCode::DataTypeError);
        return nullptr;
    }
    return parameter;
}

const Parameter* Arguments::take()
{
    if (!hasMore()) {
        fail(ErrorCode::MissingParameter);
        return nullptr;
    }
    return &m_parameters[m_next++];
}

void Arguments::fail(ErrorCode error)
{
    if (m_error == ErrorCode::None) {
        m_error = error;
    }
}

} // namespace scnsim
