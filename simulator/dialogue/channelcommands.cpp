#include "dialogue/commands.h"
#include "scpi/headerpattern.h"
#include "scpi/response.h"

#include <algorithm>

namespace scnsim {

namespace {

constexpr std::size_t kLongestLabel = 40;
constexpr std::size_t kLongestUnit = 8;

/// Joins the answers of several channels.
template <typename Answer>
CommandResult forEachChannel(CommandContext& s, Arguments& a, const Answer& answerOf)
{
    const std::vector<int> channels = a.channels(s.instrument);
    if (!a.ok()) {
        return refuse(a.error());
    }
    std::string text;
    for (const int channel : channels) {
        if (!text.empty()) {
            text += ',';
        }
        text += answerOf(s.instrument.channel(channel));
    }
    return answer(std::move(text));
}

/// Short form without the optional parts: "VOLTage[:DC]" gives "VOLT".
std::string shortName(const std::string& spelling)
{
    std::string name;
    bool inBrackets = false;
    for (const char c : spelling) {
        if (c == '[' || c == ']') {
            inBrackets = c == '[';
        } else if (!inBrackets && (c < 'a' || c > 'z')) {
            name += c;
        }
    }
    return name;
}

const FunctionInfo* functionNamed(const std::string& name)
{
    for (const FunctionInfo& function : functions()) {
        if (HeaderPattern(function.spelling).matches(headerNodes(name))) {
            return &function;
        }
    }
    return nullptr;
}

CommandResult setFunction(CommandContext& s, Arguments& a)
{
    // No function name exceeds the longest text the instrument takes.
    const FunctionInfo* const function = functionNamed(a.text(kLongestLabel));
    const std::vector<int> channels = a.channels(s.instrument);
    if (!a.ok()) {
        return refuse(a.error());
    }
    return function ? outcomeOf(s.instrument.setFunction(channels, *function))
                    : refuse(ErrorCode::IllegalParameterValue);
}

CommandResult function(CommandContext& s, Arguments& a)
{
    return forEachChannel(
        s, a, [](const ChannelSettings& c) { return quoted(shortName(c.function->spelling)); });
}

/// A channel that measures no temperature answers as for a thermocouple.
CommandResult transducerType(CommandContext& s, Arguments& a)
{
    return forEachChannel(s, a, [](const ChannelSettings& c) {
        return c.function->transducer ? c.function->transducer : "TC";
    });
}

CommandResult setLabel(CommandContext& s, Arguments& a)
{
    const std::string label = a.text(kLongestLabel);
    const std::vector<int> channels = a.channels(s.instrument);
    if (!a.ok()) {
        return refuse(a.error());
    }
    s.instrument.setLabel(channels, label);
    return done();
}

CommandResult label(CommandContext& s, Arguments& a)
{
    return forEachChannel(s, a, [](const ChannelSettings& c) { return quoted(c.label); });
}

/// A unit becomes part of each reading, so it must not contain a separator.
CommandResult setScaledUnit(CommandContext& s, Arguments& a)
{
    const std::string unit = a.text(kLongestUnit);
    const std::vector<int> channels = a.channels(s.instrument);
    if (!a.ok()) {
        return refuse(a.error());
    }
    if (unit.find_first_of(" ,;\"") != std::string::npos) {
        return refuse(ErrorCode::InvalidStringData);
    }
    s.instrument.setScaledUnit(channels, unit);
    return done();
}

CommandResult scaledUnit(CommandContext& s, Arguments& a)
{
    return forEachChannel(s, a, [](const ChannelSettings& c) { return quoted(c.scaledUnit); });
}

constexpr CommandRow kCommands[] = {
    {"CALCulate:SCALe:UNIT", setScaledUnit, scaledUnit},
    {"ROUTe:CHANnel:LABel", setLabel, label},
    {"[SENSe:]FUNCtion", setFunction, function},
    {"[SENSe:]TEMPerature:TRANsducer:TYPE", nullptr, transducerType},
};

using O = Option;

/// Some settings have more than one header: the lowest frequency of period and frequency, and the
/// diode, which is "DIOD" as a function and "DIDD" as a header.
constexpr OptionHeader kOptions[] = {
    {"[SENSe:]VOLTage[:DC]:RANGe", O::VoltDcRange},
    {"[SENSe:]VOLTage[:DC]:RANGe:AUTO", O::VoltDcRangeAuto},
    {"[SENSe:]VOLTage:AC:RANGe", O::VoltAcRange},
    {"[SENSe:]VOLTage:AC:RANGe:AUTO", O::VoltAcRangeAuto},
    {"[SENSe:]PERiod:VOLTage:RANGe", O::PeriodRange},
    {"[SENSe:]PERiod:VOLTage:RANGe:AUTO", O::PeriodRangeAuto},
    {"[SENSe:]FREQuency:VOLTage:RANGe", O::FreqRange},
    {"[SENSe:]FREQuency:VOLTage:RANGe:AUTO", O::FreqRangeAuto},
    {"[SENSe:]RESistance:RANGe", O::ResRange},
    {"[SENSe:]RESistance:RANGe:AUTO", O::ResRangeAuto},
    {"[SENSe:]FRESistance:RANGe", O::FresRange},
    {"[SENSe:]FRESistance:RANGe:AUTO", O::FresRangeAuto},
    {"[SENSe:]CAPacitance:RANGe", O::CapRange},
    {"[SENSe:]CAPacitance:RANGe:AUTO", O::CapRangeAuto},
    {"[SENSe:]CURRent[:DC]:RANGe", O::CurrDcRange},
    {"[SENSe:]CURRent[:DC]:RANGe:AUTO", O::CurrDcRangeAuto},
    {"[SENSe:]CURRent:AC:RANGe", O::CurrAcRange},
    {"[SENSe:]CURRent:AC:RANGe:AUTO", O::CurrAcRangeAuto},
    {"[SENSe:]STRain:VOLTage:RANGe", O::StrainRange},
    {"[SENSe:]STRain:VOLTage:RANGe:AUTO", O::StrainRangeAuto},
    {"[SENSe:]VOLTage[:DC]:NPLC", O::VoltDcNplc},
    {"[SENSe:]RESistance:NPLC", O::ResNplc},
    {"[SENSe:]FRESistance:NPLC", O::FresNplc},
    {"[SENSe:]TEMPerature:NPLC", O::TempNplc},
    {"[SENSe:]STRain:NPLC", O::StrainNplc},
    {"[SENSe:]CURRent[:DC]:NPLC", O::CurrDcNplc},
    {"[SENSe:]DIODe:NPLC", O::DiodeNplc},
    {"[SENSe:]DIDD:NPLC", O::DiodeNplc},
    {"[SENSe:]VOLTage:AC:BANDwidth", O::VoltAcBand},
    {"[SENSe:]CURRent:AC:BANDwidth", O::CurrAcBand},
    {"[SENSe:]PERiod:RANGe:LOWer", O::PeriodBand},
    {"[SENSe:]PERiod:VOLTage:BANDwidth", O::PeriodBand},
    {"[SENSe:]FREQuency:RANGe:LOWer", O::FreqBand},
    {"[SENSe:]FREQuency:VOLTage:BANDwidth", O::FreqBand},
    {"[SENSe:]RESistance:OCOMpensated", O::ResCompensation},
    {"[SENSe:]FRESistance:OCOMpensated", O::FresCompensation},
    {"ROUTe:CHANnel:DELay", O::Delay},
    {"ROUTe:CHANnel:DELay:AUTO", O::DelayAuto},
    {"INPut:IMPedance:AUTO", O::InputImpedanceAuto},
    {"[SENSe:]VOLTage[:DC]:REFerence", O::VoltReference},
    {"[SENSe:]TEMPerature:TRANsducer:TCouple:TYPE", O::TcType},
    {"[SENSe:]TEMPerature:TRANsducer:TCouple:RJUNction", O::TcJunctionTemperature},
    {"[SENSe:]TEMPerature:TRANsducer:TCouple:RJUNction:TYPE", O::TcJunctionType},
    {"[SENSe:]TEMPerature:TRANsducer:TCouple:CHECk", O::TcCheck},
    {"[SENSe:]TEMPerature:TRANsducer:TCouple:REFerence", O::TcReference},
    {"[SENSe:]TEMPerature:TRANsducer:RTD:REFerence", O::RtdReference},
    {"[SENSe:]TEMPerature:TRANsducer:FRTD:REFerence", O::FrtdReference},
    {"[SENSe:]TEMPerature:TRANsducer:THERmistor:REFerence", O::TherReference},
    {"[SENSe:]TEMPerature:TRANsducer:FTHermistor:REFerence", O::FthReference},
    {"[SENSe:]TEMPerature:TRANsducer:RTD:RESistance", O::RtdResistance},
    {"[SENSe:]TEMPerature:TRANsducer:FRTD:RESistance", O::FrtdResistance},
    {"[SENSe:]TEMPerature:TRANsducer:RTD:TYPE", O::RtdType},
    {"[SENSe:]TEMPerature:TRANsducer:FRTD:TYPE", O::FrtdType},
    {"[SENSe:]TEMPerature:TRANsducer:THERmistor:TYPE", O::TherType},
    {"[SENSe:]TEMPerature:TRANsducer:FTHermistor:TYPE", O::FthType},
    {"UNIT:TEMPerature", O::TemperatureUnit},
    {"[SENSe:]STRain:GFACtor", O::GaugeFactor},
    {"[SENSe:]STRain:RESistance", O::StrainResistance},
    {"[SENSe:]STRain:EXCitation", O::Excitation},
    {"[SENSe:]STRain:POISson", O::Poisson},
    {"CALCulate:SCALe:GAIN", O::ScaleGain},
    {"CALCulate:SCALe:OFFSet", O::ScaleOffset},
    {"CALCulate:SCALe:STATe", O::ScaleState},
    {"CALCulate:SCALe:FUNCtion", O::ScaleFunction},
    {"CALCulate:SCALe:REFerence", O::ScaleReference},
    {"CALCulate:SCALe:REFerence:AUTO", O::ScaleReferenceAuto},
    {"CALCulate:SCALe:DBM:REFerence", O::DbmReference},
    {"CALCulate:SCALe:DB:REFerence", O::DbReference},
};

double takeValue(Arguments& a, const OptionInfo& info)
{
    switch (info.kind) {
    case OptionKind::Switch:
        return a.onOff() ? 1 : 0;
    case OptionKind::Choice:
        return static_cast<double>(a.word(info.words));
    default:
        return a.numberOrLimit(info.minimum, info.maximum, info.initial);
    }
}

std::string valueText(const OptionInfo& info, double value)
{
    switch (info.kind) {
    case OptionKind::Switch:
        return switchText(value != 0);
    case OptionKind::Choice:
        return Mnemonic(info.words.data[static_cast<std::size_t>(value)]).shortForm();
    case OptionKind::Listed:
        return signedInteger(static_cast<long long>(value));
    default:
        return settingNumber(value);
    }
}

} // namespace

Facts<CommandRow> channelCommands()
{
    return kCommands;
}

Facts<OptionHeader> optionHeaders()
{
    return kOptions;
}

CommandResult setOption(CommandContext& context, Arguments& arguments, Option option)
{
    const double value = takeValue(arguments, optionInfo(option));
    const std::vector<int> channels = arguments.channels(context.instrument);
    return arguments.ok() ? outcomeOf(context.instrument.setOption(channels, option, value))
                          : refuse(arguments.error());
}

CommandResult queryOption(CommandContext& context, Arguments& arguments, Option option)
{
    const OptionInfo& info = optionInfo(option);
    return forEachChannel(context, arguments, [&info](const ChannelSettings& c) {
        return valueText(info, c.value(info.option));
    });
}

} // namespace scnsim
