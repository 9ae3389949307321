#include "app/fourwirepartners.h"

#include "app/channeltable.h"
#include "app/quietcontrols.h"
#include "app/scanmarks.h"
#include "common/channelnumber.h"
#include "widgets/customcombobox.h"

namespace scn {

FourWirePartners::FourWirePartners(const ChannelTable& table, const ScanMarks& marks)
    : m_table(table)
    , m_marks(marks)
{
}

int FourWirePartners::candidateOf(int channel) const
{
    const ChannelNumber number = ChannelNumber::fromLabel(channel);
    const int bank = m_catalogue.bankSize(static_cast<uchar>(number.slot()));
    return bank != 0 && number.position() <= bank ? number.shifted(bank).label() : 0;
}

int FourWirePartners::partnerOf(int channel, int function) const
{
    return m_catalogue.isFourWire(function) ? candidateOf(channel) : 0;
}

ChannelRow FourWirePartners::partnerRow(int channel) const
{
    return m_table.row(partnerOf(channel, m_table.functionOf(m_table.row(channel))));
}

bool FourWirePartners::isTakenOver(int channel) const
{
    return m_marks.isWithdrawn(channel);
}

void FourWirePartners::match(int channel) const
{
    const int partner = candidateOf(channel);
    if (partner == 0 || !m_table.row(partner).exists()) {
        return;
    }
    if (m_catalogue.isFourWire(m_table.functionOf(m_table.row(channel)))) {
        takeOver(partner, channel);
    } else if (isTakenOver(partner)) {
        giveBack(partner);
    }
}

void FourWirePartners::takeOver(int partner, int channel) const
{
    CustomComboBox* const box = m_table.row(partner).function;
    refillQuietly(box, m_catalogue.functionList(channel));
    selectQuietly(box, m_table.row(channel).function->currentIndex());
    m_table.setRowEnabled(m_table.item(partner), false);
    m_marks.withdraw(partner);
}

void FourWirePartners::giveBack(int partner) const
{
    CustomComboBox* const box = m_table.row(partner).function;
    refillQuietly(box, m_catalogue.functionList(partner));
    selectQuietly(box, 0);
    m_table.setRowEnabled(m_table.item(partner), true);
    m_marks.release(partner);
}

} // namespace scn
