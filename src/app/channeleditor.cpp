#include "app/channeleditor.h"

#include "app/channelform.h"
#include "app/channeloptions.h"
#include "app/channeltable.h"
#include "app/fourwirepartners.h"
#include "app/instrumentlink.h"
#include "app/panelplace.h"
#include "app/quietcontrols.h"
#include "app/scanmarks.h"
#include "channels/advancedsetting.h"
#include "channels/unittext.h"
#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QCheckBox>
#include <QDebug>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>

namespace scn {

ChannelEditor::ChannelEditor(const ChannelTable& table, const ScanMarks& marks,
                             const FourWirePartners& partners, InstrumentLink& link)
    : m_table(table)
    , m_marks(marks)
    , m_partners(partners)
    , m_link(link)
{
}

/// Ends every change: sends the command, empties the error queue and reads the channel back.
void ChannelEditor::sendAndReadBack(const QString& command, int channel)
{
    InstrumentLink::send(command);
    InstrumentLink::send(QStringLiteral("SYST:ERR?"));
    m_link.readChannel(channel);
}

void ChannelEditor::changeFunction(int channel, const QString& name)
{
    assertGuiThread();
    const ChannelRow row = m_table.row(channel);
    if (!row.exists()) {
        return;
    }
    const int function = m_catalogue.functionIndex(name);
    if (g_scanChannels.contains(channel)) {
        g_scanChannels[channel] = m_catalogue.baseUnit(function);
        m_marks.announce();
    }
    showFunction(row, name, function, channel);
    if (matchPartner(channel, function)) {
        applyFunction(function, channel);
    }
}

/// Fills a row's lists and panel for its new function.
void ChannelEditor::showFunction(const ChannelRow& row, const QString& name, int function,
                                 int channel) const
{
    refillQuietly(row.range, m_catalogue.rangeList(function));
    refillQuietly(row.resolution, m_catalogue.temperatureUnitList(function));
    row.functionPanel->showFunctionOptions(name, function, channel);
    {
        const QSignalBlocker blocker(row.scale);
        row.scale->setChecked(false);
    }
    refillQuietly(row.scaleFunction, m_catalogue.scaleFunctionList(function));
    selectQuietly(row.unit, m_catalogue.defaultUnitIndex(function));
}

/// Takes the partner or gives it back. Returns false if its row has no function box.
bool ChannelEditor::matchPartner(int channel, int function) const
{
    const int partner = m_partners.candidateOf(channel);
    QTreeWidgetItem* const item = m_table.item(partner);
    if (partner == 0 || !item) {
        return true;
    }
    if (!m_table.row(partner).exists()) {
        return false;
    }
    // Signals are not blocked: the scan list without the partner is sent.
    if (m_catalogue.isFourWire(function) && item->checkState(ScanColumn) == Qt::Checked) {
        item->setCheckState(ScanColumn, Qt::Unchecked);
    }
    m_partners.match(channel);
    return true;
}

/// Selects a function on the instrument and reads its options back, for the index that the user chose: the name
/// that the instrument reports stands for a whole family.
void ChannelEditor::applyFunction(int function, int channel)
{
    const auto entry = funcCommands.constFind(function);
    if (entry != funcCommands.constEnd()) {
        InstrumentLink::send(
            QStringLiteral("FUNC \"%1\",(@%2)").arg(entry->function, QString::number(channel)));
        InstrumentLink::send(QStringLiteral("SYST:ERR?"));
        if (!entry->typeCommand.isEmpty()) {
            InstrumentLink::send(
                entry->typeCommand.arg(entry->typeArgument, QString::number(channel)));
            InstrumentLink::send(QStringLiteral("SYST:ERR?"));
        }
    }
    m_link.readOptions(function, channel);
}

void ChannelEditor::changeRange(int channel, int rangeRow)
{
    assertGuiThread();
    const ChannelRow row = m_table.row(channel);
    if (rangeRow < 0 || !row.exists()) {
        return;
    }
    const int function = m_table.functionOf(row);
    if (const ChannelRow partner = m_partners.partnerRow(channel); partner.exists()) {
        // This blocks the row's own function box, not the partner's range: the partner's command goes out first.
        const QSignalBlocker blocker(row.function);
        // The partner may still list the ranges of its previous function.
        if (rangeRow >= partner.range->count()) {
            refillQuietly(partner.range, m_catalogue.rangeList(function));
        }
        partner.range->setCurrentIndex(rangeRow);
    }
    const QString header = m_catalogue.scpiHeader(function);
    if (rangeRow == 0) {
        sendAndReadBack(
            QStringLiteral("%1:RANG:AUTO ON,(@%2)").arg(header, QString::number(channel)), channel);
        return;
    }
    sendAndReadBack(QStringLiteral("%1:RANG %2,(@%3)")
                        .arg(header)
                        .arg(m_catalogue.rangeValue(function, rangeRow))
                        .arg(channel),
                    channel);
}

void ChannelEditor::changeTemperatureUnit(int channel, int unitRow)
{
    assertGuiThread();
    const ChannelRow row = m_table.row(channel);
    if (unitRow < 0 || !row.exists()) {
        return;
    }
    if (const ChannelRow partner = m_partners.partnerRow(channel); partner.exists()) {
        selectQuietly(partner.resolution, unitRow);
    }
    sendAndReadBack(QStringLiteral("UNIT:TEMP %1,(@%2)")
                        .arg(row.resolution->currentText(), QString::number(channel)),
                    channel);
}

void ChannelEditor::changeScaling(int channel, bool on)
{
    assertGuiThread();
    const ChannelRow row = m_table.row(channel);
    if (!row.exists()) {
        return;
    }
    const int function = m_table.functionOf(row);
    const QString scaled = on ? scaledUnit(channel) : QString();
    const QString unit = scaled.isNull() ? m_catalogue.baseUnit(function) : scaled;
    if (g_scanChannels.value(channel) != unit) {
        m_marks.announce();
    }
    if (m_partners.partnerOf(channel, function) != 0) {
        // The state is copied to the row's own check box; the partner's stays.
        const QSignalBlocker blocker(row.scale);
        row.scale->setChecked(on);
    }
    sendAndReadBack(
        QStringLiteral("CALC:SCAL:STAT %1,(@%2)")
            .arg(on ? QStringLiteral("ON") : QStringLiteral("OFF"), QString::number(channel)),
        channel);
}

/// The unit of the row one bank further, for any function; null if there is no such row.
QString ChannelEditor::scaledUnit(int channel) const
{
    const ChannelNumber number = ChannelNumber::fromLabel(channel);
    const int bank = m_catalogue.bankSize(static_cast<uchar>(number.slot()));
    const ChannelRow other = m_table.row(number.shifted(bank).label());
    return other.unit ? other.unit->currentText() : QString();
}

void ChannelEditor::changeScaleFunction(int channel, int functionRow)
{
    assertGuiThread();
    const ChannelRow row = m_table.row(channel);
    if (functionRow < 0 || !row.exists()) {
        return;
    }
    enableScaleControls(row);
    const QString name = row.scaleFunction->currentText();
    row.scalePanel->showScaleOptions(name, channel);
    if (const ChannelRow partner = m_partners.partnerRow(channel); partner.exists()) {
        selectQuietly(partner.scaleFunction, functionRow);
    }
    sendAndReadBack(QStringLiteral("CALC:SCAL:FUNC %1,(@%2)").arg(name, QString::number(channel)),
                    channel);
}

bool ChannelEditor::changeGain(int channel, const QString& text)
{
    return changeNumber(QStringLiteral("CALC:SCAL:GAIN %1,(@%2)"), channel, text,
                        &ChannelRow::gain);
}

bool ChannelEditor::changeOffset(int channel, const QString& text)
{
    return changeNumber(QStringLiteral("CALC:SCAL:OFFS %1,(@%2)"), channel, text,
                        &ChannelRow::offset);
}

bool ChannelEditor::changeNumber(const QString& command, int channel, const QString& text,
                                 CustomLineEdit* ChannelRow::*edit)
{
    assertGuiThread();
    // A pasted line end would split the command.
    const QString number = text.trimmed();
    if (!m_table.row(channel).exists() || number.isEmpty()) {
        return true;
    }
    bool isNumber = false;
    number.toDouble(&isNumber);
    if (!isNumber) {
        return false;
    }
    if (const ChannelRow partner = m_partners.partnerRow(channel);
        partner.exists() && partner.*edit) {
        (partner.*edit)->setText(number);
    }
    sendAndReadBack(command.arg(number, QString::number(channel)), channel);
    return true;
}

void ChannelEditor::changeUnit(int channel, int unitRow)
{
    assertGuiThread();
    const ChannelRow row = m_table.row(channel);
    if (unitRow < 0 || !row.exists()) {
        return;
    }
    // Signals are not blocked: the partner's command goes out first.
    if (const ChannelRow partner = m_partners.partnerRow(channel); partner.unit) {
        partner.unit->setCurrentIndex(unitRow);
    }
    if (g_scanChannels.contains(channel)) {
        g_scanChannels[channel] = m_marks.displayUnit(row);
    }
    m_marks.announce();
    const QString unit = row.unit->currentText();
    qDebug() << "onUnitChanged"
             << "-0000-" << unit;
    const bool isNone = unit == m_catalogue.unitList().constFirst();
    sendAndReadBack(QStringLiteral("CALC:SCAL:UNIT \"%1\",(@%2)")
                        .arg(isNone ? QString() : unitOnWire(unit), QString::number(channel)),
                    channel);
}

void ChannelEditor::openFunctionPanel(int channel, QPushButton* button) const
{
    AdvancedSetting* const panel = m_table.form().moreButtonPanels.value(button);
    if (!panel || panel->isVisible()) {
        return;
    }
    const ChannelRow row = m_table.row(channel);
    panel->showFunctionOptions(row.function->currentText(), m_table.functionOf(row), channel);
    openBeside(panel, button);
}

void ChannelEditor::openScalePanel(int channel, QPushButton* button) const
{
    AdvancedSetting* const panel = m_table.form().moreButtonPanels.value(button);
    if (!panel || panel->isVisible()) {
        return;
    }
    panel->showScaleOptions(m_table.row(channel).scaleFunction->currentText(), channel);
    openBeside(panel, button);
}

} // namespace scn
