#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <chrono>
#include <optional>

namespace scn {

/// What the read-back of one channel shows, with the type of its value.
enum class ChannelOption {
    RangeList,              ///< QStringList
    RangeRow,               ///< int
    DelayAutomatic,         ///< true
    DelaySeconds,           ///< double
    TemperatureUnitList,    ///< QStringList
    TemperatureUnit,        ///< QString
    Nplc,                   ///< double
    InputImpedanceAuto,     ///< bool
    LowFrequency,           ///< double
    OffsetCompensation,     ///< bool
    RefJunctionFixed,       ///< bool
    FixedJunctionTemp,      ///< double
    RtdR0,                  ///< double
    GaugeFactor,            ///< double
    StrainResistance,       ///< double
    DriveVoltage,           ///< double
    PoissonRatio,           ///< double
    Gain,                   ///< double
    Offset,                 ///< double
    ScalingOn,              ///< bool
    Unit,                   ///< QString
    ScaleFunctionList,      ///< QStringList
    ScaleFunctionRow,       ///< int
    PercentReference,       ///< double
    DbmReferenceResistance, ///< double
    DbReference,            ///< double
};

/// The sources of a scan's trigger that the program shows.
enum class TriggerSource { Immediate, Alarm, Timer };

/// Where what the instrument reports is shown. Called on the GUI thread only.
class InstrumentDisplay
{
public:
    virtual ~InstrumentDisplay() = default;

    /// The instrument has told its identity; the search for modules begins.
    virtual void instrumentFound() = 0;

    /// True when rows were built for the slot's module.
    virtual bool hasModule(int slot) const = 0;

    virtual void showScanList(const QList<int>& channels) = 0;

    /// An empty name is that of a function which has none. False when the channel has no row.
    virtual bool showFunction(int channel, const QString& displayName) = 0;

    virtual void showOption(int channel, ChannelOption option, const QVariant& value) = 0;

    virtual void showTriggerSource(TriggerSource source) = 0;
    virtual void showInterval(std::chrono::seconds interval) = 0;

    /// How many sweeps end a run; none when it has no such end.
    virtual void showSweepCount(std::optional<int> count) = 0;

    virtual void showUsbLogging(bool on) = 0;
    virtual void showRowLimitOn(bool on) = 0;
    virtual void showRowLimit(int rows) = 0;

    /// All of the instrument's state has been shown.
    virtual void readBackDone() = 0;
};

} // namespace scn
