#pragma once

#include "channels/advancedsetting.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"
#include "support/fakevisa.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QStringList>

#include <algorithm>

inline const QString kNplc = QStringLiteral("电源线周期数(NPLC)");
inline const QString kLowFrequency = QStringLiteral("频率下限");
inline const QString kOffset = QStringLiteral("偏移补偿");
inline const QString kDelay = QStringLiteral("通道延迟(秒)");
inline const QString kInputResistance = QStringLiteral("直流输入电阻");
inline const QString kAutoCheck = QStringLiteral("热电偶/自动检查");
inline const QString kSetReference = QStringLiteral("热电偶/设置为参考");
inline const QString kRefJunction = QStringLiteral("参考结温度");
inline const QString kRtd = QStringLiteral("RTD类型");
inline const QString kGaugeFactor = QStringLiteral("仪器系数");
inline const QString kStrainResistance = QStringLiteral("应变仪电阻");
inline const QString kDriveVoltage = QStringLiteral("激励电压");
inline const QString kPoisson = QStringLiteral("柏松比");
inline const QString kReferenceResistance = QStringLiteral("参考电阻");
inline const QString kDbReference = QStringLiteral("dB参考值");
inline const QString kPercentReference = QStringLiteral("参考值");

/// Names of the groups in these tests: the title, and for the two with the same title their check
/// box too.
inline QString nameOf(const QGroupBox* group)
{
    const auto* check = group->findChild<QCheckBox*>();
    return check ? group->title() + QStringLiteral("/") + check->text() : group->title();
}

inline QGroupBox* groupIn(const QWidget& panel, const QString& name)
{
    for (QGroupBox* box : panel.findChildren<QGroupBox*>()) {
        if (nameOf(box) == name) {
            return box;
        }
    }
    qFatal("no group %s", qPrintable(name));
}

/// The text of the radio button of a group that is pressed.
inline QString checkedIn(const QGroupBox& group)
{
    for (const QRadioButton* button : group.findChildren<QRadioButton*>()) {
        if (button->isChecked()) {
            return button->text();
        }
    }
    return QString();
}

inline QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

/// A panel on the screen, with the instrument it talks to.
class OpenPanel
{
public:
    /// The panel of a function's options, channel 105.
    explicit OpenPanel(int functionIndex)
    {
        connectInstrument();
        m_panel.showFunctionOptions(QStringLiteral("name"), functionIndex, 105);
        m_panel.show();
    }

    /// The panel of a scale function's references, channel 105.
    explicit OpenPanel(const QString& scaleFunction)
    {
        connectInstrument();
        m_panel.showScaleOptions(scaleFunction, 105);
        m_panel.show();
    }

    ~OpenPanel()
    {
        g_instrumentConnected = false;
        g_visa->disconnectDevice();
    }

    OpenPanel(const OpenPanel&) = delete;
    OpenPanel& operator=(const OpenPanel&) = delete;

    AdvancedSetting& panel() { return m_panel; }

    QGroupBox* group(const QString& name) const { return groupIn(m_panel, name); }

    QComboBox* list(const QString& name) const { return group(name)->findChild<QComboBox*>(); }
    QDoubleSpinBox* spin(const QString& name) const
    {
        return group(name)->findChild<QDoubleSpinBox*>();
    }
    QCheckBox* check(const QString& name) const { return group(name)->findChild<QCheckBox*>(); }
    QRadioButton* radio(const QString& name, const QString& text) const
    {
        for (QRadioButton* button : group(name)->findChildren<QRadioButton*>()) {
            if (button->text() == text) {
                return button;
            }
        }
        qFatal("no button %s", qPrintable(text));
    }

    QStringList shownGroups() const
    {
        QStringList names;
        for (const QGroupBox* box : m_panel.findChildren<QGroupBox*>()) {
            if (box->isVisible()) {
                names << nameOf(box);
            }
        }
        return sorted(names);
    }

    void restoreDefaults() { button(QStringLiteral("恢复默认值"))->click(); }
    QPushButton* button(const QString& text) const
    {
        for (QPushButton* candidate : m_panel.findChildren<QPushButton*>()) {
            if (candidate->text() == text) {
                return candidate;
            }
        }
        qFatal("no button %s", qPrintable(text));
    }

    /// The commands since the last call, each followed by the channel to read back.
    QStringList takeSent()
    {
        QStringList lines;
        lines.swap(m_log);
        return lines;
    }

    /// The VISA calls of those commands, since the last call.
    QStringList takeCalls()
    {
        const QStringList calls = m_visa.calls();
        m_visa.clearCalls();
        return calls;
    }

    bool hasTitle(const QString& text) const
    {
        const auto labels = m_panel.findChildren<QLabel*>();
        return std::any_of(labels.cbegin(), labels.cend(),
                           [&text](const QLabel* label) { return label->text() == text; });
    }

private:
    void connectInstrument()
    {
        m_visa.setResponder([this](const QByteArray& line) {
            m_log << QString::fromUtf8(line);
            return QByteArray();
        });
        g_visa->connectDevice(QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET"));
        g_instrumentConnected = true;
        QObject::connect(&m_panel, &AdvancedSetting::sigComponentChanged, &m_panel,
                         [this](int channel) { m_log << QString::number(channel); });
    }

    FakeVisa m_visa;
    QStringList m_log;
    AdvancedSetting m_panel;
};

inline const QString kChanged = QStringLiteral("105");

inline QStringList sent(const char* command)
{
    return {QString::fromUtf8(command), kChanged};
}
