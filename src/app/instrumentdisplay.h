#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <chrono>
#include <optional>

namespace scn {

/// What the read-back of a channel shows. The comments give the type of the value.
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

/// The trigger sources that the program shows.
enum class TriggerChoice { Immediate, Alarm, Timer };

/// Shows the state that the instrument reports. All methods run on the GUI thread.
class InstrumentDisplay
{
public:
    virtual ~InstrumentDisplay() = default;

    /// The instrument has identified itself; the module search follows.
    virtual void instrumentFound() = 0;

    /// True if the table has rows for the slot's module.
    virtual bool hasModule(int slot) const = 0;

    virtual void showScanList(const QList<int>& channels) = 0;

    /// The name is empty for an unknown function. Returns false if the channel has no row.
    virtual bool showFunction(int channel, const QString& displayName) = 0;

    virtual void showOption(int channel, ChannelOption option, const QVariant& value) = 0;

    virtual void showTriggerSource(TriggerChoice source) = 0;
    virtual void showInterval(std::chrono::seconds interval) = 0;

    /// The number of sweeps after which a run ends; none if it runs until stopped.
    virtual void showSweepCount(std::optional<int> count) = 0;

    virtual void showUsbLogging(bool on) = 0;
    virtual void showRowLimitOn(bool on) = 0;
    virtual void showRowLimit(int rows) = 0;

    /// The read-back is complete.
    virtual void readBackDone() = 0;
};

} // namespace scn
