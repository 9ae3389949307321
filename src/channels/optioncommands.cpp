#include "channels/optioncommands.h"

namespace scn {

namespace {

QString onOff(bool on)
{
    return on ? QStringLiteral("ON") : QStringLiteral("OFF");
}

QString numberText(double value)
{
    return QStringLiteral("%1").arg(value);
}

} // namespace

OptionCommands::OptionCommands(const QString& header, int channel)
    : m_header(header)
    , m_channel(channel)
{
}

QString OptionCommands::nplc(const QString& cycles) const
{
    // Four characters, so that a strain function's header keeps its colon: "STR::NPLC".
    constexpr int kFamilyLength = 4;
    return QStringLiteral("%1:NPLC %2,(@%3)")
        .arg(m_header.left(kFamilyLength), cycles, QString::number(m_channel));
}

QString OptionCommands::lowFrequency(int hertz) const
{
    return QStringLiteral("%1:BAND %2,(@%3)")
        .arg(m_header, QString::number(hertz), QString::number(m_channel));
}

QString OptionCommands::offsetCompensation(bool on) const
{
    return QStringLiteral("%1:OCOM %2,(@%3)").arg(m_header, onOff(on), QString::number(m_channel));
}

QString OptionCommands::automaticDelay(bool on) const
{
    return plain(QStringLiteral("ROUT:CHAN:DEL:AUTO %1,(@%2)"), onOff(on));
}

QString OptionCommands::delay(double seconds) const
{
    return plain(QStringLiteral("ROUT:CHAN:DEL %1,(@%2)"), numberText(seconds));
}

QString OptionCommands::inputImpedanceAuto(bool on) const
{
    return plain(QStringLiteral("INP:IMP:AUTO %1,(@%2)"), onOff(on));
}

QString OptionCommands::thermocoupleCheck(bool on) const
{
    return transducer(QStringLiteral("%1:TRAN:%2:CHEC %3,(@%4)"), onOff(on));
}

QString OptionCommands::reference(bool on) const
{
    return transducer(QStringLiteral("%1:TRAN:%2:REF %3,(@%4)"), onOff(on));
}

QString OptionCommands::refJunctionFixed(bool fixed) const
{
    return transducer(QStringLiteral("%1:TRAN:%2:RJUN:TYPE %3,(@%4)"),
                      fixed ? QStringLiteral("FIX") : QStringLiteral("INT"));
}

QString OptionCommands::fixedJunctionTemp(double temperature) const
{
    return transducer(QStringLiteral("%1:TRAN:%2:RJUN %3,(@%4)"), numberText(temperature));
}

QString OptionCommands::rtdR0(double ohms) const
{
    return transducer(QStringLiteral("%1:TRAN:%2:RES %3,(@%4)"), numberText(ohms));
}

QString OptionCommands::gaugeFactor(double factor) const
{
    return strain(QStringLiteral("%1:GFAC %2,(@%3)"), factor);
}

QString OptionCommands::strainResistance(double ohms) const
{
    return strain(QStringLiteral("%1:RES %2,(@%3)"), ohms);
}

QString OptionCommands::poissonRatio(double ratio) const
{
    return strain(QStringLiteral("%1:POIS %2,(@%3)"), ratio);
}

QString OptionCommands::driveVoltage(double volts) const
{
    return strain(QStringLiteral("%1:EXC %2,(@%3)"), volts);
}

QString OptionCommands::dbmReferenceResistance(const QString& ohms) const
{
    return plain(QStringLiteral("CALC:SCAL:DBM:REF %1,(@%2)"), ohms);
}

QString OptionCommands::dbReference(double decibels) const
{
    return plain(QStringLiteral("CALC:SCAL:DB:REF %1,(@%2)"), numberText(decibels));
}

QString OptionCommands::percentReference(double reference) const
{
    return plain(QStringLiteral("CALC:SCAL:REF %1,(@%2)"), numberText(reference));
}

/// The header up to its first colon.
QString OptionCommands::root() const
{
    return m_header.section(QLatin1Char(':'), 0, 0);
}

/// The header behind its first colon.
QString OptionCommands::branch() const
{
    return m_header.section(QLatin1Char(':'), 1);
}

QString OptionCommands::plain(const QString& form, const QString& value) const
{
    return form.arg(value, QString::number(m_channel));
}

QString OptionCommands::transducer(const QString& form, const QString& value) const
{
    if (root() != QLatin1String("TEMP")) {
        return {};
    }
    return form.arg(root(), branch(), value, QString::number(m_channel));
}

QString OptionCommands::strain(const QString& form, double value) const
{
    if (root() != QLatin1String("STR")) {
        return {};
    }
    return form.arg(root(), numberText(value), QString::number(m_channel));
}

} // namespace scn
