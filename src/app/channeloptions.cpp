#include "app/channeloptions.h"

#include "app/instrumentdisplay.h"
#include "app/quietcontrols.h"
#include "channels/advancedsetting.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStringList>

namespace scn {

namespace {

/// Row of the automatic delay in the delay list.
constexpr int kAutomaticDelay = 0;

int rowOfText(const CustomComboBox* box, const QString& text)
{
    return box->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
}

/// Selects the first row if the list has no such row.
void selectOrFirst(CustomComboBox* box, int row)
{
    selectQuietly(box, row < box->count() ? row : 0);
}

void showTemperatureUnit(CustomComboBox* box, const QString& unit)
{
    // An unknown unit leaves the selection alone.
    if (const int row = rowOfText(box, unit); row >= 0) {
        selectQuietly(box, row);
    }
}

void showUnit(CustomComboBox* box, const QString& unit)
{
    if (box) {
        selectQuietly(box, qMax(0, rowOfText(box, unit)));
    }
}

void showNumber(CustomLineEdit* edit, double value)
{
    const QSignalBlocker blocker(edit);
    edit->setText(QString::number(value, 'g', 6));
}

void showScaling(QCheckBox* box, bool on)
{
    const QSignalBlocker blocker(box);
    box->setChecked(on);
}

void showScaleFunction(const ChannelRow& row, int function)
{
    selectOrFirst(row.scaleFunction, function);
    enableScaleControls(row);
}

/// Shows an option in the panel of the measurement.
void showInFunctionPanel(AdvancedSetting* panel, ChannelOption option, const QVariant& value)
{
    switch (option) {
    case ChannelOption::DelayAutomatic:
        panel->setDelayMode(kAutomaticDelay);
        break;
    case ChannelOption::DelaySeconds: // the mode's box stays as it was
        panel->setDelayValue(value.toDouble());
        break;
    case ChannelOption::Nplc:
        panel->setNplc(value.toDouble());
        break;
    case ChannelOption::InputImpedanceAuto:
        panel->setInputImpedanceAuto(value.toBool());
        break;
    case ChannelOption::LowFrequency:
        panel->setLowFrequency(value.toDouble());
        break;
    case ChannelOption::OffsetCompensation:
        panel->setOffsetCompensation(value.toBool());
        break;
    case ChannelOption::RefJunctionFixed:
        panel->setRefJunctionFixed(value.toBool());
        break;
    case ChannelOption::FixedJunctionTemp:
        panel->setFixedJunctionTemp(value.toDouble());
        break;
    case ChannelOption::RtdR0:
        panel->setRtdR0(value.toDouble());
        break;
    case ChannelOption::GaugeFactor:
        panel->setGaugeFactor(value.toDouble());
        break;
    case ChannelOption::StrainResistance:
        panel->setStrainResistance(value.toDouble());
        break;
    case ChannelOption::DriveVoltage:
        panel->setDriveVoltage(value.toDouble());
        break;
    case ChannelOption::PoissonRatio:
        panel->setPoissonRatio(value.toDouble());
        break;
    default:
        Q_UNREACHABLE();
    }
}

} // namespace

void showChannelOption(const ChannelRow& row, ChannelOption option, const QVariant& value)
{
    switch (option) {
    case ChannelOption::RangeList:
        refillQuietly(row.range, value.toStringList());
        break;
    case ChannelOption::RangeRow:
        selectOrFirst(row.range, value.toInt());
        break;
    case ChannelOption::TemperatureUnitList:
        refillQuietly(row.resolution, value.toStringList());
        break;
    case ChannelOption::TemperatureUnit:
        showTemperatureUnit(row.resolution, value.toString());
        break;
    case ChannelOption::Gain:
        showNumber(row.gain, value.toDouble());
        break;
    case ChannelOption::Offset:
        showNumber(row.offset, value.toDouble());
        break;
    case ChannelOption::ScalingOn:
        showScaling(row.scale, value.toBool());
        break;
    case ChannelOption::Unit:
        showUnit(row.unit, value.toString());
        break;
    case ChannelOption::ScaleFunctionList:
        refillQuietly(row.scaleFunction, value.toStringList());
        break;
    case ChannelOption::ScaleFunctionRow:
        showScaleFunction(row, value.toInt());
        break;
    case ChannelOption::PercentReference:
        row.scalePanel->setPercentReference(value.toDouble());
        break;
    case ChannelOption::DbmReferenceResistance:
        row.scalePanel->setDbmReferenceResistance(value.toDouble());
        break;
    case ChannelOption::DbReference:
        row.scalePanel->setDbReference(value.toDouble());
        break;
    default:
        showInFunctionPanel(row.functionPanel, option, value);
    }
}

void enableScaleControls(const ChannelRow& row)
{
    if (!row.function->isEnabledTo(row.function->parentWidget())) {
        return;
    }
    const bool isLinear =
        row.scaleFunction->currentIndex() == static_cast<int>(scn::ScaleFunction::Linear);
    for (CustomLineEdit* edit : {row.gain, row.offset}) {
        if (edit) {
            edit->setEnabled(isLinear);
        }
    }
    row.scaleMore->setEnabled(!isLinear);
}

} // namespace scn
