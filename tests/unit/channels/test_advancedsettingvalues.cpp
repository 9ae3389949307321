// What the panel is given to show, and the defaults it restores.
#include "openpanel.h"
#include "support/testprogram.h"

#include <QtTest>

#include <optional>

namespace {

/// A value for each option, none of them its default.
void giveValues(AdvancedSetting& panel)
{
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
}

} // namespace

class TestAdvancedSettingValues : public QObject
{
    Q_OBJECT

private slots:
    void settersSendNothing_data();
    void settersSendNothing();
    void settersKeepValuesForALaterPanel();
    void settersIgnoreValuesThatNoControlHas();
    void defaultsAreRestoredInOrder();
    void defaultsTouchOnlyShownGroups();
    void defaultsThatHoldAlreadySendNothing();
    void scalingDefaultsAreRestored();
};

void TestAdvancedSettingValues::settersSendNothing_data()
{
    QTest::addColumn<bool>("isShownFirst");
    QTest::newRow("panel that has been shown") << true;
    QTest::newRow("panel that is shown later") << false;
}

void TestAdvancedSettingValues::settersSendNothing()
{
    QFETCH(const bool, isShownFirst);
    OpenPanel open(0);
    AdvancedSetting later;
    AdvancedSetting& panel = isShownFirst ? open.panel() : later;
    giveValues(panel);
    panel.show();

    const auto groupOf = [&panel](const QString& name) { return groupIn(panel, name); };
    const auto spinOf = [&panel](const QString& name) {
        return groupIn(panel, name)->findChild<QDoubleSpinBox*>();
    };
    const auto checkedOf = [&panel](const QString& name) {
        return checkedIn(*groupIn(panel, name));
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
    // What the instrument reports is shown, whether in a band or not.
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

void TestAdvancedSettingValues::settersKeepValuesForALaterPanel()
{
    // A value beyond the control's range is clamped, as on an open panel.
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

void TestAdvancedSettingValues::settersIgnoreValuesThatNoControlHas()
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
    // A reply close to a row's number selects that row.
    open.panel().setNplc(0.2 * (1.0 + 1e-14));
    QCOMPARE(open.list(kNplc)->currentIndex(), 1);
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSettingValues::defaultsAreRestoredInOrder()
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
                          QStringLiteral("ROUT:CHAN:DEL 0,(@105)"), kChanged,
                          QStringLiteral("ROUT:CHAN:DEL:AUTO ON,(@105)"), kChanged,
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

void TestAdvancedSettingValues::defaultsTouchOnlyShownGroups()
{
    OpenPanel open(22);
    open.panel().setNplc(100.0);
    open.panel().setInputImpedanceAuto(false);
    open.panel().setGaugeFactor(4.0);
    open.panel().setDelayValue(3.0);
    open.restoreDefaults();
    QCOMPARE(open.takeSent(),
             sent("ROUT:CHAN:DEL 0,(@105)") + sent("ROUT:CHAN:DEL:AUTO ON,(@105)"));
    QCOMPARE(open.list(kNplc)->currentText(), QStringLiteral("100"));
    QVERIFY(open.radio(kInputResistance, QStringLiteral("10M"))->isChecked());
    QCOMPARE(open.spin(kGaugeFactor)->value(), 4.0);
}

void TestAdvancedSettingValues::defaultsThatHoldAlreadySendNothing()
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

void TestAdvancedSettingValues::scalingDefaultsAreRestored()
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

SCN_TEST(TestAdvancedSettingValues, QApplication)
#include "test_advancedsettingvalues.moc"
