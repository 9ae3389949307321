#pragma once

#include "channels/optioncontrols.h"

#include <QString>
#include <QWidget>

class CommFunc;
class QAbstractButton;
class QLabel;
class QVBoxLayout;

namespace scn {
class OptionCommands;
}

/// The popup with the options of one channel that do not fit into its row of the channel table. Each
/// row has two: one for the options of the measurement function, one for the references of the scaling.
/// A change goes to the instrument at once, a typed number once it is finished: on Return or when its box
/// is left. sigComponentChanged() then asks for a read-back. A panel that is hidden, as by a press outside
/// or by its X, finishes the number that is being typed; one that is closed, as by Escape or by an overlay,
/// drops it. Nothing is sent while the instrument is not connected.
///
/// The controls are made when the panel is first shown. Until then the setters keep what the instrument
/// reported, so that a large channel table costs nothing for panels that nobody opens. GUI thread only.
class AdvancedSetting : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AdvancedSetting)

public:
    explicit AdvancedSetting(QWidget* parent = nullptr);

    /// Sends nothing: a number that is being typed goes with the panel.
    ~AdvancedSetting() override;

    /// Makes this the panel of a function's options. An unknown function index shows no option.
    void showFunctionOptions(const QString& name, int functionIndex, int channel);

    /// Makes this the panel of a scale function's references.
    void showScaleOptions(const QString& scaleFunction, int channel);

    // What the instrument reports. None of these sends a command.

    /// Integration time in power line cycles; a value that no row has is logged and changes nothing.
    void setNplc(double cycles);
    /// Lower frequency limit: 3, 20 or 200 Hz; any other value changes nothing.
    void setLowFrequency(double hertz);
    void setOffsetCompensation(bool on);
    /// Row of the delay box, 0 automatic and 1 a fixed time; any other row changes nothing.
    void setDelayMode(int row);
    /// Channel delay in seconds.
    void setDelayValue(double seconds);
    /// True for the high input resistance, false for 10 MOhm.
    void setInputImpedanceAuto(bool on);
    void setRefJunctionFixed(bool fixed);
    /// Fixed reference junction temperature, in the channel's unit.
    void setFixedJunctionTemp(double temperature);
    /// Resistance of an RTD at 0 °C, in ohms.
    void setRtdR0(double ohms);
    void setGaugeFactor(double factor);
    /// Resistance of the unstrained gauge, in ohms.
    void setStrainResistance(double ohms);
    void setPoissonRatio(double ratio);
    /// Excitation voltage of the bridge, in volts.
    void setDriveVoltage(double volts);
    /// Reference of the DBM scaling, in ohms; a value that no row has is logged and changes nothing.
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

    /// Gives each option that the panel shows its default, as if the user did it: what changes is sent.
    void onReDefSetBtnClicked();

signals:
    /// A command has been sent; the channel is to be read back.
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
    QString m_scaleFunction = QStringLiteral("SCAL");
    int m_channel = 101;
    QString m_title;
    scn::OptionGroups m_functionGroups;
    scn::OptionGroups m_scaleGroups;

    QWidget* m_titleBar = nullptr;
    QLabel* m_titleLabel = nullptr;
    scn::OptionControls m_controls;
};
