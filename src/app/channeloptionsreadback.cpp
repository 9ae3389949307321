#include "app/channeloptionsreadback.h"

#include "app/instrumentdisplay.h"
#include "app/linkwatch.h"
#include "channels/measurementfunction.h"

#include <algorithm>
#include <iterator>

namespace scn {

/// A query and the option that its reply shows. In the query, {H} is the function's header, {H0} and {H1} the
/// parts before and after its first colon, {ch} the channel number.
struct ChannelQuestion
{
    const char* query;
    ChannelOption option{};
    QVariant (*decode)(const QString& reply) = nullptr; ///< null if the reply is not used
};

namespace {

/// A query for the functions of one panel kind.
struct OptionQuestion
{
    PanelKind kind;
    ChannelQuestion question;
};

QVariant number(const QString& reply)
{
    return reply.toDouble();
}

QVariant text(const QString& reply)
{
    return reply;
}

QVariant isOn(const QString& reply)
{
    return reply.toInt() != 0;
}

QVariant isOne(const QString& reply)
{
    return reply.toInt() == 1;
}

QVariant isNotInternal(const QString& reply)
{
    return reply != QLatin1String("INT");
}

QVariant unitOnScreen(const QString& reply)
{
    QString unit = reply;
    unit.remove(QLatin1Char('"'));
    if (unit == QLatin1String("#C")) {
        return QStringLiteral("°C");
    }
    if (unit == QLatin1String("#F")) {
        return QStringLiteral("°F");
    }
    return unit;
}

/// Row of a scale function; the first row for an unknown one.
QVariant scaleFunctionRow(const QString& reply)
{
    constexpr const char* kScaleFunctions[] = {"SCAL", "PCT", "DBM", "DB"};
    const auto* const* found =
        std::find_if(std::begin(kScaleFunctions), std::end(kScaleFunctions),
                     [&reply](const char* name) { return reply == QLatin1String(name); });
    return found != std::end(kScaleFunctions)
               ? static_cast<int>(std::distance(std::begin(kScaleFunctions), found))
               : 0;
}

using Kind = PanelKind;
using Option = ChannelOption;

constexpr OptionQuestion kOptionQuestions[] = {
    {Kind::DcVoltage, {"{H}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::DcVoltage, {"INP:IMP:AUTO? (@{ch})", Option::InputImpedanceAuto, isOn}},
    {Kind::DcVoltage, {"VOLT:REF? (@{ch})"}},
    {Kind::AcAmplitude, {"{H}:BAND? (@{ch})", Option::LowFrequency, number}},
    {Kind::CycleTime, {"{H0}:RANG:LOW? (@{ch})", Option::LowFrequency, number}},
    {Kind::Resistance, {"{H}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::Resistance, {"{H}:OCOM? (@{ch})", Option::OffsetCompensation, isOn}},
    {Kind::Thermocouple, {"{H0}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::Thermocouple, {"UNIT:TEMP? (@{ch})", Option::TemperatureUnit, text}},
    {Kind::Thermocouple,
     {"{H0}:TRAN:{H1}:RJUN:TYPE? (@{ch})", Option::RefJunctionFixed, isNotInternal}},
    {Kind::Thermocouple, {"{H0}:TRAN:{H1}:RJUN? (@{ch})", Option::FixedJunctionTemp, number}},
    {Kind::Rtd, {"{H0}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::Rtd, {"UNIT:TEMP? (@{ch})", Option::TemperatureUnit, text}},
    {Kind::Rtd, {"{H0}:TRAN:{H1}:REF? (@{ch})"}},
    {Kind::Rtd, {"{H0}:TRAN:{H1}:RES? (@{ch})", Option::RtdR0, number}},
    {Kind::Rtd, {"TEMP:TRAN:RTD:TYPE? (@{ch})"}},
    {Kind::Thermistor, {"{H0}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::Thermistor, {"UNIT:TEMP? (@{ch})", Option::TemperatureUnit, text}},
    {Kind::DirectStrain, {"{H0}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::DirectStrain, {"{H0}:GFAC? (@{ch})", Option::GaugeFactor, number}},
    {Kind::DirectStrain, {"{H0}:RES? (@{ch})", Option::StrainResistance, number}},
    {Kind::BendingBridge, {"{H0}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::BendingBridge, {"{H0}:GFAC? (@{ch})", Option::GaugeFactor, number}},
    {Kind::BendingBridge, {"{H0}:EXC? (@{ch})", Option::DriveVoltage, number}},
    {Kind::PoissonBridge, {"{H0}:NPLC? (@{ch})", Option::Nplc, number}},
    {Kind::PoissonBridge, {"{H0}:GFAC? (@{ch})", Option::GaugeFactor, number}},
    {Kind::PoissonBridge, {"{H0}:EXC? (@{ch})", Option::DriveVoltage, number}},
    {Kind::PoissonBridge, {"{H0}:POIS? (@{ch})", Option::PoissonRatio, number}},
    {Kind::DcCurrent, {"{H}:NPLC? (@{ch})", Option::Nplc, number}},
};

constexpr ChannelQuestion kScalingQuestions[] = {
    {"CALC:SCAL:GAIN? (@{ch})", Option::Gain, number},
    {"CALC:SCAL:OFFS? (@{ch})", Option::Offset, number},
    {"CALC:SCAL:STAT? (@{ch})", Option::ScalingOn, isOne},
    {"CALC:SCAL:UNIT? (@{ch})", Option::Unit, unitOnScreen},
    {"CALC:SCAL:FUNC? (@{ch})", Option::ScaleFunctionRow, scaleFunctionRow},
    {"CALC:SCAL:REF:AUTO? (@{ch})"},
    {"CALC:SCAL:REF? (@{ch})", Option::PercentReference, number},
    {"CALC:SCAL:DBM:REF? (@{ch})", Option::DbmReferenceResistance, number},
    {"CALC:SCAL:DB:REF? (@{ch})", Option::DbReference, number},
};

bool hasRanges(PanelKind kind)
{
    switch (kind) {
    case Kind::DcVoltage:
    case Kind::AcAmplitude:
    case Kind::CycleTime:
    case Kind::Resistance:
    case Kind::Capacitance:
    case Kind::BendingBridge:
    case Kind::PoissonBridge:
    case Kind::DcCurrent:
        return true;
    case Kind::Thermocouple:
    case Kind::Rtd:
    case Kind::Thermistor:
    case Kind::DirectStrain:
    case Kind::Diode:
        return false;
    }
    return false;
}

} // namespace

ChannelOptionsReadBack::ChannelOptionsReadBack(LinkWatch& link, InstrumentDisplay& display,
                                               int function, int channel)
    : m_link(link)
    , m_display(display)
    , m_function(function)
    , m_channel(channel)
    , m_header(m_catalogue.scpiHeader(function))
    , m_kind(static_cast<PanelKind>(m_catalogue.optionPanelKind(function)))
{
}

void ChannelOptionsReadBack::run()
{
    readRange();
    readDelay();
    show(Option::TemperatureUnitList, m_catalogue.temperatureUnitList(m_function));
    for (const OptionQuestion& option : kOptionQuestions) {
        if (option.kind == m_kind) {
            askAndShow(option.question);
        }
    }
    readScaling();
}

QString ChannelOptionsReadBack::ask(const char* query)
{
    QString line = QLatin1String(query);
    line.replace(QLatin1String("{H}"), m_header);
    line.replace(QLatin1String("{H0}"), m_header.section(QLatin1Char(':'), 0, 0));
    line.replace(QLatin1String("{H1}"), m_header.section(QLatin1Char(':'), 1));
    line.replace(QLatin1String("{ch}"), QString::number(m_channel));
    return m_link.ask(line);
}

void ChannelOptionsReadBack::show(ChannelOption option, const QVariant& value)
{
    m_link.show([this, option, &value] { m_display.showOption(m_channel, option, value); });
}

void ChannelOptionsReadBack::askAndShow(const ChannelQuestion& question)
{
    const QString reply = ask(question.query);
    if (question.decode) {
        show(question.option, question.decode(reply));
    }
}

void ChannelOptionsReadBack::readRange()
{
    show(Option::RangeList, m_catalogue.rangeList(m_function));
    if (!hasRanges(m_kind)) {
        return;
    }
    int row = 0;
    if (!isOn(ask("{H}:RANG:AUTO? (@{ch})")).toBool()) {
        const double range = ask("{H}:RANG? (@{ch})").toDouble();
        row = std::max(0, m_catalogue.rangeRowForValue(m_function, range));
    }
    show(Option::RangeRow, row);
}

void ChannelOptionsReadBack::readDelay()
{
    if (isOn(ask("ROUT:CHAN:DEL:AUTO? (@{ch})")).toBool()) {
        show(Option::DelayAutomatic, true);
    } else {
        show(Option::DelaySeconds, number(ask("ROUT:CHAN:DEL? (@{ch})")));
    }
}

void ChannelOptionsReadBack::readScaling()
{
    for (const ChannelQuestion& question : kScalingQuestions) {
        if (question.option == Option::ScaleFunctionRow) {
            show(Option::ScaleFunctionList, m_catalogue.scaleFunctionList(m_function));
        }
        askAndShow(question);
    }
}

} // namespace scn
