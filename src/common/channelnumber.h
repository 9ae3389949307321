#pragma once

#include <QString>

namespace scn {

/// Where a channel is: its module's slot and its position in the module, both from 1. The label, 101
/// for the first channel of slot 1, is how the user and the instrument write it.
class ChannelNumber
{
public:
    constexpr ChannelNumber(int slot, int position)
        : m_slot(slot)
        , m_position(position)
    {
    }

    static constexpr ChannelNumber fromLabel(int label)
    {
        return {label / kLabelsPerSlot, label % kLabelsPerSlot};
    }

    /// The channel in a row of its module, which counts from 0.
    static constexpr ChannelNumber fromRow(int slot, int row) { return {slot, row + 1}; }

    /// The channel this many positions further in the same module.
    constexpr ChannelNumber shifted(int positions) const
    {
        return {m_slot, m_position + positions};
    }

    constexpr int slot() const { return m_slot; }
    constexpr int position() const { return m_position; }
    constexpr int row() const { return m_position - 1; }
    constexpr int label() const { return m_slot * kLabelsPerSlot + m_position; }

private:
    static constexpr int kLabelsPerSlot = 100;

    int m_slot;
    int m_position;
};

/// How lists and curves name a channel: "101(Vdc)".
inline QString channelText(int label, const QString& unit)
{
    return QStringLiteral("%1(%2)").arg(QString::number(label), unit);
}

/// The label in a channel's text; 0, and `*ok` false, when there is none.
inline int labelOfChannelText(const QString& text, bool* ok = nullptr)
{
    return text.section(QLatin1Char('('), 0, 0).toInt(ok);
}

} // namespace scn
