#pragma once

#include "app/channelrow.h"
#include "channels/commfunc.h"

#include <QString>

namespace scn {

class ChannelTable;
class FourWirePartners;
class InstrumentLink;
class ScanMarks;

/// Sends each change of a channel to the instrument at once and then shows in the row what the instrument
/// reports. Ignores a negative row (nothing selected) and a channel without a row. GUI thread; blocks during
/// its exchanges.
class ChannelEditor
{
public:
    ChannelEditor(const ChannelTable& table, const ScanMarks& marks,
                  const FourWirePartners& partners, InstrumentLink& link);

    /// `name` is the display name of the selected function.
    void changeFunction(int channel, const QString& name);
    void changeRange(int channel, int rangeRow);
    void changeTemperatureUnit(int channel, int unitRow);
    void changeScaling(int channel, bool on);
    void changeScaleFunction(int channel, int functionRow);
    void changeUnit(int channel, int unitRow);

    /// Returns false and sends nothing if the text is not a number. Ignores a blank text.
    bool changeGain(int channel, const QString& text);
    bool changeOffset(int channel, const QString& text);

    /// Opens the panel of a "..." button, unless it is open.
    void openFunctionPanel(int channel, QPushButton* button) const;
    void openScalePanel(int channel, QPushButton* button) const;

private:
    void showFunction(const ChannelRow& row, const QString& name, int function, int channel) const;
    bool matchPartner(int channel, int function) const;
    void applyFunction(int function, int channel);
    void sendAndReadBack(const QString& command, int channel);
    bool changeNumber(const QString& command, int channel, const QString& text,
                      CustomLineEdit* ChannelRow::*edit);
    QString scaledUnit(int channel) const;

    const ChannelTable& m_table;
    const ScanMarks& m_marks;
    const FourWirePartners& m_partners;
    InstrumentLink& m_link;
    mutable CommFunc m_catalogue;
};

} // namespace scn
