#pragma once

#include <QString>

namespace scn {

/// The commands that set the options of a channel. Empty for an option that the channel's function does
/// not have.
class OptionCommands
{
public:
    /// `header` is the prefix of the function's option commands.
    OptionCommands(const QString& header, int channel);

    QString nplc(const QString& cycles) const;
    QString lowFrequency(int hertz) const;
    QString offsetCompensation(bool on) const;
    QString automaticDelay(bool on) const;
    QString delay(double seconds) const;
    QString inputImpedanceAuto(bool on) const;

    // Temperature sensors only.
    QString thermocoupleCheck(bool on) const;
    QString reference(bool on) const;
    QString refJunctionFixed(bool fixed) const;
    QString fixedJunctionTemp(double temperature) const;
    QString rtdR0(double ohms) const;

    // Strain gauges only.
    QString gaugeFactor(double factor) const;
    QString strainResistance(double ohms) const;
    QString poissonRatio(double ratio) const;
    QString driveVoltage(double volts) const;

    // The references of the scale functions, the same for every function.
    QString dbmReferenceResistance(const QString& ohms) const;
    QString dbReference(double decibels) const;
    QString percentReference(double reference) const;

private:
    QString root() const;
    QString branch() const;
    QString plain(const QString& form, const QString& value) const;
    QString transducer(const QString& form, const QString& value) const;
    QString strain(const QString& form, double value) const;

    QString m_header;
    int m_channel;
};

} // namespace scn
