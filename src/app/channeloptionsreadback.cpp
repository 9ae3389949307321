#include "app/channeloptionsreadback.h"

#include "app/instrumentdisplay.h"
#include "app/linkwatch.h"
#include "channels/measurementfunction.h"
#include "channels/scalefunction.h"
#include "channels/unittext.h"

#include <algorithm>

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

QVariant displayUnit(const QString& reply)
{
    return unitOnScreen(reply);
}

/// Row of a scale function; the first row for an unknown one.
QVariant scaleFunctionRow(const QString& reply)
{
    return static_cast<int>(scaleFunctionOf(reply));
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
    {"CALC:SCAL:UNIT? (@{ch})", Option::Unit, displayUnit},
    {"CALC:SCAL:FUNC? (@{ch})", Option::ScaleFunctionRow, scaleFunctionRow},
    {"CALC:SCAL:REF:AUTO? (@{ch})"},
    {"CALC:SCAL:REF? (@{ch})", Option::PercentReference, number},
    {"CALC:SCAL:DBM:REF? (@{ch})", Option::DbmReferenceResistance, number},
    {"CALC:SCAL:DB:REF? (@{ch})", Option::DbReference, number},
};

} // namespace

ChannelOptionsReadBack::ChannelOptionsReadBack(LinkWatch& link, InstrumentDisplay& display,
                                               int function, int channel)
    : m_link(link)
    , m_display(display)
    , m_function(function)
    , m_channel(channel)
    , m_header(m_catalogue.scpiHeader(function))
    , m_kind(panelOf(function))
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
    const QStringList ranges = m_catalogue.rangeList(m_function);
    show(Option::RangeList, ranges);
    if (ranges.isEmpty()) {
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
