#pragma once

#include "channels/optioncontrols.h"
#include "channels/scalefunction.h"

#include <QString>
#include <QWidget>

class CommFunc;
class QAbstractButton;
class QLabel;
class QVBoxLayout;

namespace scn {
class OptionCommands;
}

/// The popup with those options of a channel that do not fit into its row of the channel table. Each row
/// has two: one for the options of the measurement function, one for the references of the scaling.
///
/// A change goes to the instrument at once; a typed number goes when it is finished, on Return or when
/// its box loses the focus. sigComponentChanged() then requests a read-back. Hiding the panel, by a press
/// outside or its X, finishes the number being typed; closing it, by Escape or an overlay, discards it.
/// Nothing is sent while the instrument is not connected.
///
/// The controls are created when the panel is first shown. Until then the setters store what the
/// instrument reports, so a large channel table pays nothing for panels that nobody opens. GUI thread.
class AdvancedSetting : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AdvancedSetting)

public:
    explicit AdvancedSetting(QWidget* parent = nullptr);

    /// Sends nothing: a number being typed is discarded.
    ~AdvancedSetting() override;

    /// Shows the options of a measurement function; none for an unknown index.
    void showFunctionOptions(const QString& name, int functionIndex, int channel);

    /// Shows the references of a scale function.
    void showScaleOptions(const QString& scaleFunction, int channel);

    // What the instrument reports. Sends no commands.

    /// Integration time in power line cycles; a value without a row is only logged.
    void setNplc(double cycles);
    /// Lower frequency limit: 3, 20 or 200 Hz; any other value is ignored.
    void setLowFrequency(double hertz);
    void setOffsetCompensation(bool on);
    /// Row of the delay box: 0 automatic, 1 a fixed time; any other row is ignored.
    void setDelayMode(int row);
    /// Channel delay in seconds.
    void setDelayValue(double seconds);
    /// True for the high input resistance, false for 10 MOhm.
    void setInputImpedanceAuto(bool on);
    void setRefJunctionFixed(bool fixed);
    /// Fixed temperature of the reference junction, in the channel's unit.
    void setFixedJunctionTemp(double temperature);
    /// Resistance of an RTD at 0 °C, in ohms.
    void setRtdR0(double ohms);
    void setGaugeFactor(double factor);
    /// Resistance of the unstrained gauge, in ohms.
    void setStrainResistance(double ohms);
    void setPoissonRatio(double ratio);
    /// Excitation voltage of the bridge, in volts.
    void setDriveVoltage(double volts);
    /// Reference of the DBM scaling, in ohms; a value without a row is only logged.
    void setDbmReferenceResistance(double ohms);
    void setDbReference(double decibels);
    void setPercentReference(double reference);

    void setVisible(bool visible) override;

private slots:
    void onPlcComboCurrentIndexChanged(int index);
    void onFreqRadioBtnToggled(QAbstractButton* btn, bool checked);
    void onOffsetRadioBtnToggled(QAbstractButton* btn, bool checked);
    void onDelayComboCurrentIndexChanged(int index);
    void onDelaySpinBoxValueChanged(double value);
    void onVoltInResRadioBtnToggled(QAbstractButton* btn, bool checked);
    void onAutoCheckToggled(bool checked);
    void onSetRefToggled(bool checked);
    void onRefJuncRadioBtnToggled(QAbstractButton* btn, bool checked);
    void onFixSpinBoxValueChanged(double value);
    void onRtdRoSpinBoxValueChanged(double value);
    void onInstCoeSpinBoxValueChanged(double value);
    void onStrResSpinBoxValueChanged(double value);
    void onPoissonRatioSpinBoxValueChanged(double value);
    void onDrivVoltSpinBoxValueChanged(double value);
    void onReferResComboCurrentIndexChanged(int index);
    void ondBReferSpinBoxValueChanged(double value);
    void onReferSpinBoxValueChanged(double value);

    /// Sets each visible option to its default, as the user would: changes are sent.
    void onReDefSetBtnClicked();

signals:
    /// A command has been sent; the channel must be read back.
    void sigComponentChanged(int channelNum);

protected:
    bool event(QEvent* event) override;

private:
    const CommFunc& catalogue();
    scn::OptionCommands commands();
    bool isOn(scn::OptionChoice choice, QAbstractButton* button) const;
    void send(const QString& command);
    void setTitle(const QString& title);
    void buildPanel();
    void buildTitleBar(QVBoxLayout* layout);
    void connectControls();
    void showOfferedGroups();

    CommFunc* m_commFunc = nullptr;
    int m_functionIndex = 0;
    int m_channel = 101;
    QString m_title;
    scn::OptionGroups m_functionGroups;
    scn::OptionGroups m_scaleGroups;

    QWidget* m_titleBar = nullptr;
    QLabel* m_titleLabel = nullptr;
    scn::OptionControls m_controls;
};
