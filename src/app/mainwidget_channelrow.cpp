#include "app/mainwidget.h"

#include "app/channeloptions.h"
#include "app/channeltable.h"
#include "app/fourwirepartners.h"
#include "app/instrumentlink.h"
#include "app/quietcontrols.h"
#include "app/scanmarks.h"
#include "channels/advancedsetting.h"
#include "channels/commfunc.h"
#include "common/threadassert.h"
#include "plot/graphicsettingwidget.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/custommessagedialog.h"

#include <QCheckBox>
#include <QDebug>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QTreeWidget>

#include <algorithm>

// Editing one channel: each change goes to the instrument at once, and the row then shows what the
// instrument reports.

namespace {

constexpr int kMessageMs = 3000;
constexpr int kErrorMessage = 1;

/// Where a panel stands that would leave the free part of its screen: moved in as far as needed.
QPoint heldOnScreen(const QRect& panel)
{
    const QScreen* screen = QGuiApplication::screenAt(panel.topLeft());
    const QRect room = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    return {std::max(room.left(), std::min(panel.left(), room.right() + 1 - panel.width())),
            std::max(room.top(), std::min(panel.top(), room.bottom() + 1 - panel.height()))};
}

} // namespace

int MainWidget::senderChannel() const
{
    return rowWidgetChannels.value(qobject_cast<QWidget*>(sender()));
}

/// The end of each change: the command, the error queue emptied, the channel read back.
void MainWidget::sendAndReadBack(const QString& command, int channel)
{
    scn::InstrumentLink::send(command);
    scn::InstrumentLink::send(QStringLiteral("SYST:ERR?"));
    m_link->readChannel(channel);
}

void MainWidget::onTitleEdited(const QString& text)
{
    assertGuiThread();
    qDebug() << "onTitleEdited"
             << "-0000-" << text;
}

void MainWidget::onMeasTypeChanged(int index)
{
    assertGuiThread();
    const auto* box = qobject_cast<CustomComboBox*>(sender());
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (index < 0 || !box || !row.exists()) {
        return;
    }
    const int function = m_commFunc->functionIndex(box->currentText());
    if (g_scanChannels.contains(channel)) {
        g_scanChannels[channel] = m_commFunc->baseUnit(function);
        tellWorkspace();
    }
    scn::refillQuietly(row.range, m_commFunc->rangeList(function));
    scn::refillQuietly(row.resolution, m_commFunc->temperatureUnitList(function));
    row.functionPanel->showFunctionOptions(box->currentText(), function, channel);
    {
        const QSignalBlocker blocker(row.scale);
        row.scale->setChecked(false);
    }
    scn::refillQuietly(row.scaleFunction, m_commFunc->scaleFunctionList(function));
    scn::selectQuietly(row.unit, m_commFunc->defaultUnitIndex(function));

    if (const int partner = m_partners->candidateOf(channel);
        partner != 0 && m_table->item(partner)) {
        if (!m_table->row(partner).exists()) {
            return;
        }
        QTreeWidgetItem* const item = m_table->item(partner);
        if (m_commFunc->isFourWire(function) && item->checkState(ScanColumn) == Qt::Checked) {
            item->setCheckState(ScanColumn, Qt::Unchecked);
        }
        m_partners->match(channel);
    }
    applyFunction(function, channel);
}

/// Selects a function on the instrument and reads its options back. The index that the user chose is
/// kept: the instrument's own name stands for a whole family.
void MainWidget::applyFunction(int function, int channel)
{
    const auto entry = funcCommands.constFind(function);
    if (entry != funcCommands.constEnd()) {
        scn::InstrumentLink::send(
            QStringLiteral("FUNC \"%1\",(@%2)").arg(entry->function, QString::number(channel)));
        scn::InstrumentLink::send(QStringLiteral("SYST:ERR?"));
        if (!entry->typeCommand.isEmpty()) {
            scn::InstrumentLink::send(
                entry->typeCommand.arg(entry->typeArgument, QString::number(channel)));
            scn::InstrumentLink::send(QStringLiteral("SYST:ERR?"));
        }
    }
    m_link->readOptions(function, channel);
}

void MainWidget::onRangeTypeChanged(int index)
{
    assertGuiThread();
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (index < 0 || !row.exists()) {
        return;
    }
    const int function = m_table->functionOf(row);
    if (const ChannelRow partner = m_partners->partnerRow(channel); partner.exists()) {
        // Blocks the own function box, not the partner's range: the partner's command goes first.
        const QSignalBlocker blocker(row.function);
        // The partner may still list the ranges of the function that it had before.
        if (index >= partner.range->count()) {
            scn::refillQuietly(partner.range, m_commFunc->rangeList(function));
        }
        partner.range->setCurrentIndex(index);
    }
    const QString header = m_commFunc->scpiHeader(function);
    if (index == 0) {
        sendAndReadBack(
            QStringLiteral("%1:RANG:AUTO ON,(@%2)").arg(header, QString::number(channel)), channel);
        return;
    }
    sendAndReadBack(QStringLiteral("%1:RANG %2,(@%3)")
                        .arg(header)
                        .arg(m_commFunc->rangeValue(function, index))
                        .arg(channel),
                    channel);
}

void MainWidget::onResTypeChanged(int index)
{
    assertGuiThread();
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (index < 0 || !row.exists()) {
        return;
    }
    if (const ChannelRow partner = m_partners->partnerRow(channel); partner.exists()) {
        scn::selectQuietly(partner.resolution, index);
    }
    sendAndReadBack(QStringLiteral("UNIT:TEMP %1,(@%2)")
                        .arg(row.resolution->currentText(), QString::number(channel)),
                    channel);
}

void MainWidget::onZoomStateChanged(bool state)
{
    assertGuiThread();
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (!row.exists()) {
        return;
    }
    const int function = m_table->functionOf(row);
    QString unit = m_commFunc->baseUnit(function);
    if (state) {
        // The unit of the row one bank on, whatever the function; without such a row the base unit.
        const int bank = m_commFunc->bankSize(static_cast<uchar>(channel / 100));
        if (const ChannelRow other = m_table->row(channel + bank); other.unit) {
            unit = other.unit->currentText();
        }
    }
    if (g_scanChannels.value(channel) != unit) {
        tellWorkspace();
    }
    if (m_partners->partnerOf(channel, function) != 0) {
        // The copy goes to the own check box, so the partner's stays as it is.
        const QSignalBlocker blocker(row.scale);
        row.scale->setChecked(state);
    }
    sendAndReadBack(
        QStringLiteral("CALC:SCAL:STAT %1,(@%2)")
            .arg(state ? QStringLiteral("ON") : QStringLiteral("OFF"), QString::number(channel)),
        channel);
}

void MainWidget::onFuncTypeChanged(int index)
{
    assertGuiThread();
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (index < 0 || !row.exists()) {
        return;
    }
    scn::enableScaleControls(row);
    const QString name = row.scaleFunction->currentText();
    row.scalePanel->showScaleOptions(name, channel);
    if (const ChannelRow partner = m_partners->partnerRow(channel); partner.exists()) {
        scn::selectQuietly(partner.scaleFunction, index);
    }
    sendAndReadBack(QStringLiteral("CALC:SCAL:FUNC %1,(@%2)").arg(name, QString::number(channel)),
                    channel);
}

void MainWidget::onModificationEdited(const QString& text)
{
    sendScaleNumber(QStringLiteral("CALC:SCAL:GAIN %1,(@%2)"), text, &ChannelRow::gain);
}

void MainWidget::onLowerEdited(const QString& text)
{
    sendScaleNumber(QStringLiteral("CALC:SCAL:OFFS %1,(@%2)"), text, &ChannelRow::offset);
}

void MainWidget::sendScaleNumber(const QString& command, const QString& text,
                                 CustomLineEdit* ChannelRow::*edit)
{
    assertGuiThread();
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (!row.exists()) {
        return;
    }
    // A pasted line end would split the command in two.
    const QString number = text.trimmed();
    if (number.isEmpty()) {
        return;
    }
    bool isNumber = false;
    number.toDouble(&isNumber);
    if (!isNumber) {
        m_messageDialog->showMessage(tr("非法字符请重新输入"), kErrorMessage, kMessageMs);
        return;
    }
    if (const ChannelRow partner = m_partners->partnerRow(channel);
        partner.exists() && partner.*edit) {
        (partner.*edit)->setText(number);
    }
    sendAndReadBack(command.arg(number, QString::number(channel)), channel);
}

void MainWidget::onUnitChanged(int index)
{
    assertGuiThread();
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    if (index < 0 || !row.exists()) {
        return;
    }
    // Nothing is blocked: the partner's own change goes out first.
    if (const ChannelRow partner = m_partners->partnerRow(channel); partner.unit) {
        partner.unit->setCurrentIndex(index);
    }
    if (g_scanChannels.contains(channel)) {
        g_scanChannels[channel] = m_marks->displayUnit(row);
    }
    tellWorkspace();
    QString unit = row.unit->currentText();
    qDebug() << "onUnitChanged"
             << "-0000-" << unit;
    if (unit == QStringLiteral("°C")) {
        unit = QStringLiteral("#C");
    } else if (unit == QStringLiteral("°F")) {
        unit = QStringLiteral("#F");
    } else if (unit == m_commFunc->unitList().constFirst()) {
        unit.clear();
    }
    sendAndReadBack(
        QStringLiteral("CALC:SCAL:UNIT \"%1\",(@%2)").arg(unit, QString::number(channel)), channel);
}

void MainWidget::onMoreButton1Clicked()
{
    assertGuiThread();
    auto* button = qobject_cast<QPushButton*>(sender());
    AdvancedSetting* panel = moreButtonPanels.value(button);
    if (!panel || panel->isVisible()) {
        return;
    }
    const int channel = senderChannel();
    const ChannelRow row = m_table->row(channel);
    panel->showFunctionOptions(row.function->currentText(), m_table->functionOf(row), channel);
    openPanel(panel, button);
}

void MainWidget::onMoreButton2Clicked()
{
    assertGuiThread();
    auto* button = qobject_cast<QPushButton*>(sender());
    AdvancedSetting* panel = moreButtonPanels.value(button);
    if (!panel || panel->isVisible()) {
        return;
    }
    const int channel = senderChannel();
    panel->showScaleOptions(m_table->row(channel).scaleFunction->currentText(), channel);
    openPanel(panel, button);
}

/// Opens a panel with its corner at the right end of its button.
void MainWidget::openPanel(AdvancedSetting* panel, const QPushButton* button)
{
    const QPoint place = button->mapToGlobal(QPoint(button->width(), 0));
    panel->move(place);
    panel->show();
    // Only now it has its size.
    panel->move(heldOnScreen(QRect(place, panel->size())));
    panel->setFocus(Qt::OtherFocusReason);
}

void MainWidget::recvAdvancedSettingChanged(int channelNum)
{
    assertGuiThread();
    m_link->readChannel(channelNum);
}
