#pragma once

#include "app/channelrow.h"
#include "channels/commfunc.h"

#include <QString>

namespace scn {

class ChannelTable;
class FourWirePartners;
class InstrumentLink;
class ScanMarks;

/// Carries the user's changes of a channel to the instrument: each goes out at once, and the row then shows
/// what the instrument reports. A change without a selection, or of a channel without a row, does nothing.
/// GUI thread; blocks for its exchanges.
class ChannelEditor
{
public:
    ChannelEditor(const ChannelTable& table, const ScanMarks& marks,
                  const FourWirePartners& partners, InstrumentLink& link);

    /// `name` is that of the function now selected.
    void changeFunction(int channel, const QString& name);
    void changeRange(int channel, int rangeRow);
    void changeTemperatureUnit(int channel, int unitRow);
    void changeScaling(int channel, bool on);
    void changeScaleFunction(int channel, int functionRow);
    void changeUnit(int channel, int unitRow);

    /// False, and nothing is sent, for a text that is no number; one of blanks is passed over.
    bool changeGain(int channel, const QString& text);
    bool changeOffset(int channel, const QString& text);

    /// Open the panel behind a "..." button, unless it is open.
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
