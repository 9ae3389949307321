#include "app/globals.h"
#include "channels/advancedsetting.h"
#include "instrument/cdevicevisa.h"
#include "support/fakevisa.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest>

#include <optional>

namespace {

const QString kNplc = QStringLiteral("电源线周期数(NPLC)");
const QString kLowFrequency = QStringLiteral("频率下限");
const QString kOffset = QStringLiteral("偏移补偿");
const QString kDelay = QStringLiteral("通道延迟(秒)");
const QString kInputResistance = QStringLiteral("直流输入电阻");
const QString kAutoCheck = QStringLiteral("热电偶/自动检查");
const QString kSetReference = QStringLiteral("热电偶/设置为参考");
const QString kRefJunction = QStringLiteral("参考结温度");
const QString kRtd = QStringLiteral("RTD类型");
const QString kGaugeFactor = QStringLiteral("仪器系数");
const QString kStrainResistance = QStringLiteral("应变仪电阻");
const QString kDriveVoltage = QStringLiteral("激励电压");
const QString kPoisson = QStringLiteral("柏松比");
const QString kReferenceResistance = QStringLiteral("参考电阻");
const QString kDbReference = QStringLiteral("dB参考值");
const QString kPercentReference = QStringLiteral("参考值");

/// What a group is called in these tests: its title, and for the two of one title their check box too.
QString nameOf(const QGroupBox* group)
{
    const auto* check = group->findChild<QCheckBox*>();
    return check ? group->title() + QStringLiteral("/") + check->text() : group->title();
}

QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

/// A panel on the screen and the instrument behind it.
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

    ~OpenPanel() { g_visa->disconnectDevice(); }

    OpenPanel(const OpenPanel&) = delete;
    OpenPanel& operator=(const OpenPanel&) = delete;

    AdvancedSetting& panel() { return m_panel; }

    QGroupBox* group(const QString& name) const
    {
        for (QGroupBox* box : m_panel.findChildren<QGroupBox*>()) {
            if (nameOf(box) == name) {
                return box;
            }
        }
        qFatal("no group %s", qPrintable(name));
    }

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

    /// The commands since the last call, each followed by the channel that is to be read back.
    QStringList takeSent()
    {
        QStringList lines;
        lines.swap(m_log);
        return lines;
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
        QObject::connect(&m_panel, &AdvancedSetting::sigComponentChanged, &m_panel,
                         [this](int channel) { m_log << QString::number(channel); });
    }

    FakeVisa m_visa;
    QStringList m_log;
    AdvancedSetting m_panel;
};

const QString kChanged = QStringLiteral("105");

QStringList sent(const char* command)
{
    return {QString::fromUtf8(command), kChanged};
}

} // namespace

class TestAdvancedSetting : public QObject
{
    Q_OBJECT

private slots:
    void controlsAreMadeWhenThePanelIsFirstShown();
    void functionHasItsGroups_data();
    void functionHasItsGroups();
    void scaleFunctionHasItsGroups_data();
    void scaleFunctionHasItsGroups();
    void panelFollowsAnotherFunction();
    void titleNamesTheChannel();
    void listsHoldTheirRows();
    void newPanelHoldsInitialValues();
    void spinBoxHasItsRange_data();
    void spinBoxHasItsRange();
    void integrationTimeIsSent_data();
    void integrationTimeIsSent();
    void lowerFrequencyIsSent_data();
    void lowerFrequencyIsSent();
    void offsetCompensationIsSent();
    void delayIsSent();
    void inputResistanceIsSent();
    void thermocoupleOptionsAreSent();
    void resistanceThermometerOptionsAreSent();
    void strainOptionsAreSent();
    void otherFunctionsKeepStillAboutForeignOptions();
    void scalingReferencesAreSent();
    void resistanceOutsideTheBandsSnapsBack();
    void settersSendNothing_data();
    void settersSendNothing();
    void settersKeepValuesForALaterPanel();
    void settersIgnoreValuesThatNoControlHas();
    void defaultsAreRestoredInOrder();
    void defaultsTouchOnlyShownGroups();
    void defaultsThatHoldAlreadySendNothing();
    void scalingDefaultsAreRestored();
    void closesByItsButtonAndByAPressOutside();
    void closesWhenTheWindowIsDeactivated();
    void openListKeepsThePanelOpen();
};

void TestAdvancedSetting::controlsAreMadeWhenThePanelIsFirstShown()
{
    AdvancedSetting panel;
    panel.showFunctionOptions(QStringLiteral("name"), 0, 101);
    QVERIFY(panel.findChildren<QWidget*>().isEmpty());
    panel.show();
    QCOMPARE(panel.findChildren<QGroupBox*>().size(), 16);
    const auto made = panel.findChildren<QWidget*>().size();
    panel.hide();
    panel.show();
    QCOMPARE(panel.findChildren<QWidget*>().size(), made);
    QVERIFY(panel.windowFlags().testFlag(Qt::FramelessWindowHint));
    QCOMPARE(panel.windowType(), Qt::Popup);
}

void TestAdvancedSetting::functionHasItsGroups_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("groups");
    const auto add = [](const QList<int>& indices, const QStringList& groups) {
        for (const int index : indices) {
            QTest::addRow("function %d", index) << index << sorted(groups);
        }
    };
    add({0}, {kNplc, kDelay, kInputResistance});
    add({1, 2, 3, 33}, {kLowFrequency, kDelay});
    add({4, 5}, {kNplc, kOffset, kDelay});
    add({6, 7, 8, 9, 10, 11, 12, 13}, {kNplc, kDelay, kAutoCheck, kRefJunction});
    add({14, 15}, {kNplc, kDelay, kSetReference, kRtd});
    add({16, 17, 18, 19, 20, 21}, {kNplc, kDelay, kSetReference});
    add({22, 23}, {kDelay});
    add({24, 25}, {kNplc, kDelay, kGaugeFactor, kStrainResistance});
    add({26, 27, 29}, {kNplc, kDelay, kGaugeFactor, kDriveVoltage});
    add({28, 30, 31}, {kNplc, kDelay, kGaugeFactor, kPoisson, kDriveVoltage});
    add({32}, {kNplc, kDelay});
    add({-1, 34, 1000}, {});
}

void TestAdvancedSetting::functionHasItsGroups()
{
    QFETCH(const int, index);
    QFETCH(const QStringList, groups);
    const OpenPanel open(index);
    QCOMPARE(open.shownGroups(), groups);
}

void TestAdvancedSetting::scaleFunctionHasItsGroups_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("groups");
    QTest::newRow("SCAL") << QStringLiteral("SCAL") << QStringList();
    QTest::newRow("PCT") << QStringLiteral("PCT") << QStringList{kPercentReference};
    QTest::newRow("DB") << QStringLiteral("DB") << sorted({kReferenceResistance, kDbReference});
    QTest::newRow("DBM") << QStringLiteral("DBM") << QStringList{kReferenceResistance};
    QTest::newRow("another") << QStringLiteral("dbm") << QStringList();
}

void TestAdvancedSetting::scaleFunctionHasItsGroups()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, groups);
    const OpenPanel open(name);
    QCOMPARE(open.shownGroups(), groups);
}

void TestAdvancedSetting::panelFollowsAnotherFunction()
{
    OpenPanel open(0);
    open.panel().showFunctionOptions(QStringLiteral("other"), 22, 322);
    QCOMPARE(open.shownGroups(), QStringList{kDelay});
    open.spin(kDelay)->setValue(2.5);
    QCOMPARE(open.takeSent(),
             (QStringList{QStringLiteral("ROUT:CHAN:DEL 2.5,(@322)"), QStringLiteral("322")}));
    open.panel().showFunctionOptions(QStringLiteral("other"), 4, 322);
    QCOMPARE(open.shownGroups(), sorted({kNplc, kOffset, kDelay}));
}

void TestAdvancedSetting::titleNamesTheChannel()
{
    OpenPanel function(0);
    QVERIFY(function.hasTitle(QStringLiteral("高级设置 name-105")));
    function.panel().showFunctionOptions(QStringLiteral("%3 <b>"), 1, 201);
    QVERIFY(function.hasTitle(QStringLiteral("高级设置 %3 <b>-201")));
    AdvancedSetting scale;
    scale.showScaleOptions(QStringLiteral("PCT"), 105);
    scale.show();
    const auto labels = scale.findChildren<QLabel*>();
    QCOMPARE(labels.size(), 2);
    QCOMPARE(labels.first()->text(), QStringLiteral("PCT-105"));
}

void TestAdvancedSetting::listsHoldTheirRows()
{
    const OpenPanel open(0);
    const auto rowsOf = [&open](const QString& name) {
        QStringList rows;
        const QComboBox* box = open.list(name);
        for (int row = 0; row < box->count(); ++row) {
            rows << box->itemText(row);
        }
        return rows.join(QLatin1Char(' '));
    };
    QCOMPARE(rowsOf(kNplc), QStringLiteral("0.02 0.2 1 10 100"));
    QCOMPARE(rowsOf(kDelay), QStringLiteral("自动 时间"));
    QCOMPARE(rowsOf(kReferenceResistance),
             QStringLiteral("50 75 93 110 124 125 135 150 250 300 500 600 800 900 1000 1200 8000"));
    QCOMPARE(open.list(kNplc)->minimumWidth(), 100);
}

void TestAdvancedSetting::newPanelHoldsInitialValues()
{
    OpenPanel open(0);
    QCOMPARE(open.list(kNplc)->currentText(), QStringLiteral("1"));
    QVERIFY(open.radio(kLowFrequency, QStringLiteral("200Hz(高速)"))->isChecked());
    QVERIFY(open.radio(kOffset, QStringLiteral("关闭"))->isChecked());
    QCOMPARE(open.list(kDelay)->currentText(), QStringLiteral("自动"));
    QCOMPARE(open.spin(kDelay)->value(), 0.0);
    QVERIFY(!open.spin(kDelay)->isEnabled());
    QVERIFY(open.radio(kInputResistance, QStringLiteral("10M"))->isChecked());
    QVERIFY(!open.check(kAutoCheck)->isChecked());
    QVERIFY(!open.check(kSetReference)->isChecked());
    QVERIFY(open.radio(kRefJunction, QStringLiteral("内部"))->isChecked());
    QVERIFY(!open.spin(kRefJunction)->isEnabled());
    QCOMPARE(open.list(kReferenceResistance)->currentText(), QStringLiteral("600"));
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSetting::spinBoxHasItsRange_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<double>("initial");
    QTest::newRow("delay") << kDelay << 0.0 << 60.0 << 3 << 0.0;
    QTest::newRow("junction") << kRefJunction << -20.0 << 80.0 << 2 << 20.0;
    QTest::newRow("R0") << kRtd << 99.0 << 1010.0 << 4 << 100.0;
    QTest::newRow("gauge factor") << kGaugeFactor << 0.5 << 5.0 << 3 << 2.0;
    QTest::newRow("gauge resistance") << kStrainResistance << 80.0 << 1100.0 << 3 << 120.0;
    QTest::newRow("excitation") << kDriveVoltage << 0.9 << 12.0 << 3 << 5.0;
    QTest::newRow("Poisson ratio") << kPoisson << -0.999 << 0.5 << 3 << 0.3;
    QTest::newRow("dB") << kDbReference << -200.0 << 200.0 << 3 << 0.0;
    QTest::newRow("percent") << kPercentReference << -1e15 << 1e15 << 3 << 0.0;
}

void TestAdvancedSetting::spinBoxHasItsRange()
{
    QFETCH(const QString, group);
    QFETCH(const double, minimum);
    QFETCH(const double, maximum);
    QFETCH(const int, decimals);
    QFETCH(const double, initial);
    const OpenPanel open(0);
    const QDoubleSpinBox* box = open.spin(group);
    QCOMPARE(box->minimum(), minimum);
    QCOMPARE(box->maximum(), maximum);
    QCOMPARE(box->decimals(), decimals);
    QCOMPARE(box->value(), initial);
    QCOMPARE(box->alignment(), Qt::AlignCenter);
}

void TestAdvancedSetting::integrationTimeIsSent_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("command");
    const auto add = [](int index, const char* command) {
        QTest::addRow("function %d", index) << index << QString::fromLatin1(command);
    };
    add(0, "VOLT:NPLC 10,(@105)");
    add(4, "RES:NPLC 10,(@105)");
    add(5, "FRES:NPLC 10,(@105)");
    add(6, "TEMP:NPLC 10,(@105)");
    add(15, "TEMP:NPLC 10,(@105)");
    add(21, "TEMP:NPLC 10,(@105)");
    // A strain header cut at four characters keeps its colon.
    add(24, "STR::NPLC 10,(@105)");
    add(31, "STR::NPLC 10,(@105)");
    add(32, "CURR:NPLC 10,(@105)");
}

void TestAdvancedSetting::integrationTimeIsSent()
{
    QFETCH(const int, index);
    QFETCH(const QString, command);
    OpenPanel open(index);
    open.list(kNplc)->setCurrentIndex(3);
    QCOMPARE(open.takeSent(), (QStringList{command, kChanged}));
    open.list(kNplc)->setCurrentIndex(-1);
    QCOMPARE(open.takeSent(), QStringList());
    open.list(kNplc)->setCurrentIndex(0);
    QCOMPARE(open.takeSent().constFirst(),
             QString(command).replace(QStringLiteral(" 10,"), QStringLiteral(" 0.02,")));
}

void TestAdvancedSetting::lowerFrequencyIsSent_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("header");
    QTest::newRow("AC voltage") << 1 << QStringLiteral("VOLT:AC");
    QTest::newRow("period") << 2 << QStringLiteral("PER:VOLT");
    QTest::newRow("frequency") << 3 << QStringLiteral("FREQ:VOLT");
    QTest::newRow("AC current") << 33 << QStringLiteral("CURR:AC");
}

void TestAdvancedSetting::lowerFrequencyIsSent()
{
    QFETCH(const int, index);
    QFETCH(const QString, header);
    OpenPanel open(index);
    open.radio(kLowFrequency, QStringLiteral("3Hz(低速)"))->click();
    QCOMPARE(open.takeSent(), (QStringList{header + QStringLiteral(":BAND 3,(@105)"), kChanged}));
    open.radio(kLowFrequency, QStringLiteral("20Hz(中速)"))->click();
    QCOMPARE(open.takeSent(), (QStringList{header + QStringLiteral(":BAND 20,(@105)"), kChanged}));
    open.radio(kLowFrequency, QStringLiteral("200Hz(高速)"))->click();
    QCOMPARE(open.takeSent(), (QStringList{header + QStringLiteral(":BAND 200,(@105)"), kChanged}));
}

void TestAdvancedSetting::offsetCompensationIsSent()
{
    OpenPanel open(5);
    open.radio(kOffset, QStringLiteral("开启"))->click();
    QCOMPARE(open.takeSent(), sent("FRES:OCOM ON,(@105)"));
    open.radio(kOffset, QStringLiteral("关闭"))->click();
    QCOMPARE(open.takeSent(), sent("FRES:OCOM OFF,(@105)"));
}

void TestAdvancedSetting::delayIsSent()
{
    OpenPanel open(22);
    open.list(kDelay)->setCurrentIndex(1);
    QCOMPARE(open.takeSent(), sent("ROUT:CHAN:DEL:AUTO OFF,(@105)"));
    QVERIFY(open.spin(kDelay)->isEnabled());
    open.spin(kDelay)->setValue(1.125);
    QCOMPARE(open.takeSent(), sent("ROUT:CHAN:DEL 1.125,(@105)"));
    open.list(kDelay)->setCurrentIndex(0);
    QCOMPARE(open.takeSent(), sent("ROUT:CHAN:DEL:AUTO ON,(@105)"));
    QVERIFY(!open.spin(kDelay)->isEnabled());
}

void TestAdvancedSetting::inputResistanceIsSent()
{
    OpenPanel open(0);
    open.radio(kInputResistance, QStringLiteral("高"))->click();
    QCOMPARE(open.takeSent(), sent("INP:IMP:AUTO ON,(@105)"));
    open.radio(kInputResistance, QStringLiteral("10M"))->click();
    QCOMPARE(open.takeSent(), sent("INP:IMP:AUTO OFF,(@105)"));
}

void TestAdvancedSetting::thermocoupleOptionsAreSent()
{
    OpenPanel open(9);
    open.check(kAutoCheck)->click();
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:TC:CHEC ON,(@105)"));
    open.check(kAutoCheck)->click();
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:TC:CHEC OFF,(@105)"));
    open.radio(kRefJunction, QStringLiteral("固定"))->click();
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:TC:RJUN:TYPE FIX,(@105)"));
    QVERIFY(open.spin(kRefJunction)->isEnabled());
    open.spin(kRefJunction)->setValue(-12.25);
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:TC:RJUN -12.25,(@105)"));
    open.radio(kRefJunction, QStringLiteral("内部"))->click();
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:TC:RJUN:TYPE INT,(@105)"));
    QVERIFY(!open.spin(kRefJunction)->isEnabled());
}

void TestAdvancedSetting::resistanceThermometerOptionsAreSent()
{
    std::optional<OpenPanel> open;
    open.emplace(15);
    open->check(kSetReference)->click();
    QCOMPARE(open->takeSent(), sent("TEMP:TRAN:FRTD:REF ON,(@105)"));
    open->spin(kRtd)->setValue(1000.0);
    QCOMPARE(open->takeSent(), sent("TEMP:TRAN:FRTD:RES 1000,(@105)"));
    open.emplace(20);
    open->check(kSetReference)->click();
    QCOMPARE(open->takeSent(), sent("TEMP:TRAN:FTH:REF ON,(@105)"));
}

void TestAdvancedSetting::strainOptionsAreSent()
{
    std::optional<OpenPanel> open;
    open.emplace(25);
    open->spin(kGaugeFactor)->setValue(2.125);
    QCOMPARE(open->takeSent(), sent("STR:GFAC 2.125,(@105)"));
    open->spin(kStrainResistance)->setValue(350.0);
    QCOMPARE(open->takeSent(), sent("STR:RES 350,(@105)"));
    open.emplace(31);
    open->spin(kPoisson)->setValue(-0.25);
    QCOMPARE(open->takeSent(), sent("STR:POIS -0.25,(@105)"));
    open->spin(kDriveVoltage)->setValue(10.0);
    QCOMPARE(open->takeSent(), sent("STR:EXC 10,(@105)"));
}

void TestAdvancedSetting::otherFunctionsKeepStillAboutForeignOptions()
{
    // The groups are hidden there; their controls still obey the function's family.
    OpenPanel open(0);
    open.check(kAutoCheck)->setChecked(true);
    open.check(kSetReference)->setChecked(true);
    open.radio(kRefJunction, QStringLiteral("固定"))->setChecked(true);
    open.spin(kRefJunction)->setValue(1.0);
    open.spin(kRtd)->setValue(99.5);
    open.spin(kGaugeFactor)->setValue(1.0);
    open.spin(kStrainResistance)->setValue(100.0);
    open.spin(kPoisson)->setValue(0.1);
    open.spin(kDriveVoltage)->setValue(1.0);
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSetting::scalingReferencesAreSent()
{
    std::optional<OpenPanel> open;
    open.emplace(QStringLiteral("DB"));
    open->list(kReferenceResistance)->setCurrentIndex(16);
    QCOMPARE(open->takeSent(), sent("CALC:SCAL:DBM:REF 8000,(@105)"));
    open->list(kReferenceResistance)->setCurrentIndex(-1);
    QCOMPARE(open->takeSent(), QStringList());
    open->spin(kDbReference)->setValue(-3.5);
    QCOMPARE(open->takeSent(), sent("CALC:SCAL:DB:REF -3.5,(@105)"));
    open.emplace(QStringLiteral("PCT"));
    open->spin(kPercentReference)->setValue(0.125);
    QCOMPARE(open->takeSent(), sent("CALC:SCAL:REF 0.125,(@105)"));
    // Six significant digits, as commands write numbers.
    open->spin(kPercentReference)->setValue(12345678.0);
    QCOMPARE(open->takeSent(), sent("CALC:SCAL:REF 1.23457e+07,(@105)"));
}

void TestAdvancedSetting::resistanceOutsideTheBandsSnapsBack()
{
    OpenPanel open(14);
    const auto enter = [&open](double ohms) {
        open.spin(kRtd)->setValue(ohms);
        return open.spin(kRtd)->value();
    };
    QCOMPARE(enter(100.5), 100.5);
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:RTD:RES 100.5,(@105)"));
    QCOMPARE(enter(101.5), 100.5);
    QCOMPARE(enter(989.9999), 100.5);
    QCOMPARE(open.takeSent(), QStringList());
    for (const double ohms : {99.0, 101.0, 990.0, 1010.0, 1000.0}) {
        QCOMPARE(enter(ohms), ohms);
        QCOMPARE(open.takeSent().size(), 2);
    }
    QCOMPARE(enter(500.0), 1000.0);
    QCOMPARE(open.takeSent(), QStringList());

    // The last accepted value belongs to all panels.
    AdvancedSetting other;
    other.showFunctionOptions(QStringLiteral("name"), 14, 106);
    other.show();
    QDoubleSpinBox* box = nullptr;
    for (QGroupBox* group : other.findChildren<QGroupBox*>()) {
        if (group->title() == kRtd) {
            box = group->findChild<QDoubleSpinBox*>();
        }
    }
    QVERIFY(box);
    QCOMPARE(box->value(), 100.0);
    box->setValue(500.0);
    QCOMPARE(box->value(), 1000.0);
    QCOMPARE(enter(100.0), 100.0);
}

void TestAdvancedSetting::settersSendNothing_data()
{
    QTest::addColumn<bool>("isShownFirst");
    QTest::newRow("panel that has been shown") << true;
    QTest::newRow("panel that is shown later") << false;
}

void TestAdvancedSetting::settersSendNothing()
{
    QFETCH(const bool, isShownFirst);
    OpenPanel open(0);
    AdvancedSetting later;
    AdvancedSetting& panel = isShownFirst ? open.panel() : later;
    panel.setNplc(100.0);
    panel.setLowFrequency(20.0);
    panel.setOffsetCompensation(true);
    panel.setDelayMode(1);
    panel.setDelayValue(1.5);
    panel.setInputImpedanceAuto(true);
    panel.setRefJunctionFixed(true);
    panel.setFixedJunctionTemp(25.5);
    panel.setRtdR0(500.0);
    panel.setGaugeFactor(3.0);
    panel.setStrainResistance(350.0);
    panel.setPoissonRatio(0.25);
    panel.setDriveVoltage(10.0);
    panel.setDbmReferenceResistance(50.0);
    panel.setDbReference(-10.0);
    panel.setPercentReference(42.0);
    panel.show();

    const auto groupOf = [&panel](const QString& name) -> QGroupBox* {
        for (QGroupBox* box : panel.findChildren<QGroupBox*>()) {
            if (nameOf(box) == name) {
                return box;
            }
        }
        return nullptr;
    };
    const auto spinOf = [&groupOf](const QString& name) {
        return groupOf(name)->findChild<QDoubleSpinBox*>();
    };
    const auto checkedOf = [&groupOf](const QString& name) {
        for (const QRadioButton* button : groupOf(name)->findChildren<QRadioButton*>()) {
            if (button->isChecked()) {
                return button->text();
            }
        }
        return QString();
    };
    QCOMPARE(groupOf(kNplc)->findChild<QComboBox*>()->currentText(), QStringLiteral("100"));
    QCOMPARE(checkedOf(kLowFrequency), QStringLiteral("20Hz(中速)"));
    QCOMPARE(checkedOf(kOffset), QStringLiteral("开启"));
    QCOMPARE(groupOf(kDelay)->findChild<QComboBox*>()->currentText(), QStringLiteral("时间"));
    QCOMPARE(spinOf(kDelay)->value(), 1.5);
    QVERIFY(spinOf(kDelay)->isEnabled());
    QCOMPARE(checkedOf(kInputResistance), QStringLiteral("高"));
    QCOMPARE(checkedOf(kRefJunction), QStringLiteral("固定"));
    QCOMPARE(spinOf(kRefJunction)->value(), 25.5);
    QVERIFY(spinOf(kRefJunction)->isEnabled());
    // What the instrument reports is shown, in a band or not.
    QCOMPARE(spinOf(kRtd)->value(), 500.0);
    QCOMPARE(spinOf(kGaugeFactor)->value(), 3.0);
    QCOMPARE(spinOf(kStrainResistance)->value(), 350.0);
    QCOMPARE(spinOf(kPoisson)->value(), 0.25);
    QCOMPARE(spinOf(kDriveVoltage)->value(), 10.0);
    QCOMPARE(groupOf(kReferenceResistance)->findChild<QComboBox*>()->currentText(),
             QStringLiteral("50"));
    QCOMPARE(spinOf(kDbReference)->value(), -10.0);
    QCOMPARE(spinOf(kPercentReference)->value(), 42.0);

    panel.setOffsetCompensation(false);
    panel.setInputImpedanceAuto(false);
    panel.setRefJunctionFixed(false);
    panel.setDelayMode(0);
    QCOMPARE(checkedOf(kOffset), QStringLiteral("关闭"));
    QCOMPARE(checkedOf(kInputResistance), QStringLiteral("10M"));
    QCOMPARE(checkedOf(kRefJunction), QStringLiteral("内部"));
    QVERIFY(!spinOf(kRefJunction)->isEnabled());
    QVERIFY(!spinOf(kDelay)->isEnabled());
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSetting::settersKeepValuesForALaterPanel()
{
    // A value that the control cannot hold is cut to its range, as on a panel that is open.
    AdvancedSetting panel;
    panel.setGaugeFactor(99.0);
    panel.setDelayMode(1);
    panel.setDelayMode(7);
    panel.show();
    for (const QGroupBox* group : panel.findChildren<QGroupBox*>()) {
        if (group->title() == kGaugeFactor) {
            QCOMPARE(group->findChild<QDoubleSpinBox*>()->value(), 5.0);
        }
        if (group->title() == kDelay) {
            QCOMPARE(group->findChild<QComboBox*>()->currentIndex(), 1);
        }
    }
}

void TestAdvancedSetting::settersIgnoreValuesThatNoControlHas()
{
    OpenPanel open(0);
    open.panel().setLowFrequency(20.0);
    open.panel().setLowFrequency(25.0);
    QVERIFY(open.radio(kLowFrequency, QStringLiteral("20Hz(中速)"))->isChecked());
    open.panel().setNplc(0.2);
    QCOMPARE(open.list(kNplc)->currentIndex(), 1);
    QTest::ignoreMessage(QtDebugMsg, "未找到与值 3 匹配的选项");
    open.panel().setNplc(3.0);
    QCOMPARE(open.list(kNplc)->currentIndex(), 1);
    QTest::ignoreMessage(QtDebugMsg, "未找到与值 0 匹配的选项");
    open.panel().setNplc(0.0);
    QTest::ignoreMessage(QtDebugMsg, "未找到与值 601 匹配的选项");
    open.panel().setDbmReferenceResistance(601.0);
    QCOMPARE(open.list(kReferenceResistance)->currentText(), QStringLiteral("600"));
    open.panel().setDelayMode(2);
    open.panel().setDelayMode(-1);
    QCOMPARE(open.list(kDelay)->currentIndex(), 0);
    // A reply that is nearly the row's number is the row's.
    open.panel().setNplc(0.2 * (1.0 + 1e-14));
    QCOMPARE(open.list(kNplc)->currentIndex(), 1);
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSetting::defaultsAreRestoredInOrder()
{
    std::optional<OpenPanel> open;
    open.emplace(9);
    open->list(kNplc)->setCurrentIndex(4);
    open->list(kDelay)->setCurrentIndex(1);
    open->spin(kDelay)->setValue(3.0);
    open->check(kAutoCheck)->setChecked(true);
    open->radio(kRefJunction, QStringLiteral("固定"))->setChecked(true);
    open->spin(kRefJunction)->setValue(30.0);
    open->takeSent();
    open->restoreDefaults();
    QCOMPARE(open->takeSent(),
             (QStringList{QStringLiteral("TEMP:NPLC 1,(@105)"), kChanged,
                          QStringLiteral("ROUT:CHAN:DEL:AUTO ON,(@105)"), kChanged,
                          QStringLiteral("ROUT:CHAN:DEL 0,(@105)"), kChanged,
                          QStringLiteral("TEMP:TRAN:TC:CHEC OFF,(@105)"), kChanged,
                          QStringLiteral("TEMP:TRAN:TC:RJUN:TYPE INT,(@105)"), kChanged,
                          QStringLiteral("TEMP:TRAN:TC:RJUN 20,(@105)"), kChanged}));
    QVERIFY(!open->spin(kRefJunction)->isEnabled());
    QVERIFY(!open->spin(kDelay)->isEnabled());

    open.emplace(31);
    open->spin(kGaugeFactor)->setValue(1.0);
    open->spin(kPoisson)->setValue(0.0);
    open->spin(kDriveVoltage)->setValue(1.0);
    open->takeSent();
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), (QStringList{QStringLiteral("STR:GFAC 2,(@105)"), kChanged,
                                            QStringLiteral("STR:POIS 0.3,(@105)"), kChanged,
                                            QStringLiteral("STR:EXC 5,(@105)"), kChanged}));
}

void TestAdvancedSetting::defaultsTouchOnlyShownGroups()
{
    OpenPanel open(22);
    open.panel().setNplc(100.0);
    open.panel().setInputImpedanceAuto(false);
    open.panel().setGaugeFactor(4.0);
    open.panel().setDelayValue(3.0);
    open.restoreDefaults();
    QCOMPARE(open.takeSent(), sent("ROUT:CHAN:DEL 0,(@105)"));
    QCOMPARE(open.list(kNplc)->currentText(), QStringLiteral("100"));
    QVERIFY(open.radio(kInputResistance, QStringLiteral("10M"))->isChecked());
    QCOMPARE(open.spin(kGaugeFactor)->value(), 4.0);
}

void TestAdvancedSetting::defaultsThatHoldAlreadySendNothing()
{
    // The default of the input resistance is the high one, unlike a new panel's.
    std::optional<OpenPanel> open;
    open.emplace(0);
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), sent("INP:IMP:AUTO ON,(@105)"));
    QVERIFY(open->radio(kInputResistance, QStringLiteral("高"))->isChecked());
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), QStringList());

    open.emplace(3);
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), QStringList());
    open->panel().setLowFrequency(3.0);
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), sent("FREQ:VOLT:BAND 200,(@105)"));

    open.emplace(4);
    open->panel().setOffsetCompensation(true);
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), sent("RES:OCOM OFF,(@105)"));

    open.emplace(14);
    open->panel().setRtdR0(1000.0);
    open->check(kSetReference)->setChecked(true);
    open->takeSent();
    open->restoreDefaults();
    QCOMPARE(open->takeSent(),
             (QStringList{QStringLiteral("TEMP:TRAN:RTD:REF OFF,(@105)"), kChanged,
                          QStringLiteral("TEMP:TRAN:RTD:RES 100,(@105)"), kChanged}));

    open.emplace(24);
    open->panel().setStrainResistance(350.0);
    open->restoreDefaults();
    QCOMPARE(open->takeSent(), sent("STR:RES 120,(@105)"));
}

void TestAdvancedSetting::scalingDefaultsAreRestored()
{
    OpenPanel decibel(QStringLiteral("DB"));
    decibel.panel().setDbmReferenceResistance(50.0);
    decibel.panel().setDbReference(1.0);
    decibel.panel().setPercentReference(1.0);
    decibel.restoreDefaults();
    QCOMPARE(decibel.takeSent(),
             (QStringList{QStringLiteral("CALC:SCAL:DBM:REF 600,(@105)"), kChanged,
                          QStringLiteral("CALC:SCAL:DB:REF 0,(@105)"), kChanged}));
    decibel.panel().showScaleOptions(QStringLiteral("PCT"), 105);
    decibel.restoreDefaults();
    QCOMPARE(decibel.takeSent(), sent("CALC:SCAL:REF 0,(@105)"));
}

void TestAdvancedSetting::closesByItsButtonAndByAPressOutside()
{
    OpenPanel open(0);
    open.button(QStringLiteral("X"))->click();
    QVERIFY(!open.panel().isVisible());
    open.panel().show();
    QTest::mousePress(&open.panel(), Qt::LeftButton, {}, QPoint(2, 2));
    QVERIFY(open.panel().isVisible());
    QTest::mousePress(&open.panel(), Qt::LeftButton, {}, QPoint(-5, 2));
    QVERIFY(!open.panel().isVisible());
}

void TestAdvancedSetting::closesWhenTheWindowIsDeactivated()
{
    OpenPanel open(0);
    QEvent deactivation(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(&open.panel(), &deactivation);
    QVERIFY(!open.panel().isVisible());
}

void TestAdvancedSetting::openListKeepsThePanelOpen()
{
    OpenPanel open(0);
    QVERIFY(QTest::qWaitForWindowExposed(&open.panel()));
    open.list(kNplc)->showPopup();
    QTRY_VERIFY(open.list(kNplc)->view()->isVisible());
    QCoreApplication::processEvents();
    QVERIFY(open.panel().isVisible());
    open.list(kNplc)->hidePopup();
    QCoreApplication::processEvents();
    QVERIFY(open.panel().isVisible());
}

QTEST_MAIN(TestAdvancedSetting)
#include "test_advancedsetting.moc"
