#include "fakedisplay.h"

#include <QCoreApplication>
#include <QThread>

namespace {

const char* nameOf(scn::ChannelOption option)
{
    switch (option) {
    case scn::ChannelOption::RangeList:
        return "RangeList";
    case scn::ChannelOption::RangeRow:
        return "RangeRow";
    case scn::ChannelOption::DelayAutomatic:
        return "DelayAutomatic";
    case scn::ChannelOption::DelaySeconds:
        return "DelaySeconds";
    case scn::ChannelOption::TemperatureUnitList:
        return "TemperatureUnitList";
    case scn::ChannelOption::TemperatureUnit:
        return "TemperatureUnit";
    case scn::ChannelOption::Nplc:
        return "Nplc";
    case scn::ChannelOption::InputImpedanceAuto:
        return "InputImpedanceAuto";
    case scn::ChannelOption::LowFrequency:
        return "LowFrequency";
    case scn::ChannelOption::OffsetCompensation:
        return "OffsetCompensation";
    case scn::ChannelOption::RefJunctionFixed:
        return "RefJunctionFixed";
    case scn::ChannelOption::FixedJunctionTemp:
        return "FixedJunctionTemp";
    case scn::ChannelOption::RtdR0:
        return "RtdR0";
    case scn::ChannelOption::GaugeFactor:
        return "GaugeFactor";
    case scn::ChannelOption::StrainResistance:
        return "StrainResistance";
    case scn::ChannelOption::DriveVoltage:
        return "DriveVoltage";
    case scn::ChannelOption::PoissonRatio:
        return "PoissonRatio";
    case scn::ChannelOption::Gain:
        return "Gain";
    case scn::ChannelOption::Offset:
        return "Offset";
    case scn::ChannelOption::ScalingOn:
        return "ScalingOn";
    case scn::ChannelOption::Unit:
        return "Unit";
    case scn::ChannelOption::ScaleFunctionList:
        return "ScaleFunctionList";
    case scn::ChannelOption::ScaleFunctionRow:
        return "ScaleFunctionRow";
    case scn::ChannelOption::PercentReference:
        return "PercentReference";
    case scn::ChannelOption::DbmReferenceResistance:
        return "DbmReferenceResistance";
    case scn::ChannelOption::DbReference:
        return "DbReference";
    }
    return "";
}

QString onOff(bool on)
{
    return on ? QStringLiteral("on") : QStringLiteral("off");
}

} // namespace

void FakeDisplay::instrumentFound()
{
    note(QStringLiteral("found"));
}

void FakeDisplay::showScanList(const QList<int>& channels)
{
    QString line = QStringLiteral("scan");
    for (const int channel : channels) {
        line += QStringLiteral(" %1").arg(channel);
    }
    note(line);
}

bool FakeDisplay::showFunction(int channel, const QString& displayName)
{
    note(QStringLiteral("function %1 '%2'").arg(QString::number(channel), displayName));
    return hasRows;
}

void FakeDisplay::showOption(int channel, scn::ChannelOption option, const QVariant& value)
{
    // A list counts by its entries: what they are is the catalogue's business.
    const QString text = value.type() == QVariant::StringList
                             ? QStringLiteral("[%1]").arg(value.toStringList().size())
                             : value.toString();
    note(QStringLiteral("option %1 %2 %3")
             .arg(QString::number(channel), QLatin1String(nameOf(option)), text));
}

void FakeDisplay::showTriggerSource(scn::TriggerChoice source)
{
    switch (source) {
    case scn::TriggerChoice::Immediate:
        return note(QStringLiteral("trigger immediate"));
    case scn::TriggerChoice::Alarm:
        return note(QStringLiteral("trigger alarm"));
    case scn::TriggerChoice::Timer:
        return note(QStringLiteral("trigger timer"));
    }
}

void FakeDisplay::showInterval(std::chrono::seconds interval)
{
    note(QStringLiteral("interval %1").arg(interval.count()));
}

void FakeDisplay::showSweepCount(std::optional<int> count)
{
    note(count ? QStringLiteral("sweeps %1").arg(*count) : QStringLiteral("sweeps without end"));
}

void FakeDisplay::showUsbLogging(bool on)
{
    note(QStringLiteral("usb ") + onOff(on));
}

void FakeDisplay::showRowLimitOn(bool on)
{
    note(QStringLiteral("limit ") + onOff(on));
}

void FakeDisplay::showRowLimit(int rows)
{
    note(QStringLiteral("rows %1").arg(rows));
}

void FakeDisplay::readBackDone()
{
    note(QStringLiteral("done"));
}

QStringList FakeDisplay::takeShown()
{
    QStringList shown;
    shown.swap(m_shown);
    return shown;
}

void FakeDisplay::note(const QString& line)
{
    const bool isGuiThread = QThread::currentThread() == QCoreApplication::instance()->thread();
    m_shown.append(isGuiThread ? line : QStringLiteral("on a helper: ") + line);
}
