// What the panel shows, and what it sends to the instrument.
#include "channels/measurementfunction.h"
#include "openpanel.h"
#include "starred.h"
#include "support/testprogram.h"

#include <QAbstractItemView>
#include <QLineEdit>
#include <QtTest>

#include <optional>

class TestAdvancedSetting : public QObject
{
    Q_OBJECT

private slots:
    void firstRefusedResistanceGivesOneHundred();
    void controlsAreMadeWhenThePanelIsFirstShown();
    void panelIsDark();
    void titlesAreTranslated();
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
    void commandHasFiveSeconds();
    void resistanceOutsideTheBandsSnapsBack();
    void typedResistanceOutsideTheBandsIsNotKept();
    void closesByItsButtonAndByAPressOutside();
    void closesWhenTheWindowIsDeactivated();
    void openListKeepsThePanelOpen();
};

void TestAdvancedSetting::firstRefusedResistanceGivesOneHundred()
{
    // The first test: nothing has been accepted yet.
    OpenPanel open(14);
    open.panel().setRtdR0(1000.0);
    open.spin(kRtd)->setValue(500.0);
    QCOMPARE(open.spin(kRtd)->value(), 100.0);
    QCOMPARE(open.takeSent(), QStringList());
}

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

void TestAdvancedSetting::panelIsDark()
{
    const OpenPanel open(14);
    const QWidget* titleBar = open.button(QStringLiteral("X"))->parentWidget();
    QVERIFY(titleBar->styleSheet().contains(QLatin1String("background: #2a2a2a")));
    const auto* title = titleBar->findChild<QLabel*>();
    QCOMPARE(title->text(), QStringLiteral("高级设置 name-105"));
    QVERIFY(title->styleSheet().contains(QLatin1String("color: white")));
    QVERIFY(title->styleSheet().contains(QLatin1String("font-weight: bold")));
    for (const QString& name : {kNplc, kDelay, kReferenceResistance}) {
        QVERIFY(open.list(name)->styleSheet().contains(QLatin1String("background: #171717")));
        QCOMPARE(open.list(name)->minimumWidth(), 100);
        QVERIFY(open.list(name)->inherits("CustomComboBox"));
    }
    const auto* plate = open.group(kRtd)->findChild<QLabel*>();
    QCOMPARE(plate->text(), QStringLiteral("R0"));
    QVERIFY(plate->styleSheet().contains(QLatin1String("background: #444444")));
}

void TestAdvancedSetting::titlesAreTranslated()
{
    const Starred language("AdvancedSetting");
    OpenPanel open(0);
    const auto groups = open.panel().findChildren<QGroupBox*>();
    QCOMPARE(groups.size(), 16);
    for (const QGroupBox* box : groups) {
        QVERIFY2(box->title().startsWith(QLatin1Char('*')), qPrintable(box->title()));
    }
    QVERIFY(open.hasTitle(QStringLiteral("*高级设置 name-105")));
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
    add({-1, scn::measurementFunctions().size(), 1000}, {});
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
    // The groups are hidden there; their controls still follow the function's family.
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
    // What is not sent: the junction can be entered, the resistance is accepted.
    QVERIFY(open.spin(kRefJunction)->isEnabled());
    open.spin(kRtd)->setValue(500.0);
    QCOMPARE(open.spin(kRtd)->value(), 99.5);
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
    // Six significant digits, as in the commands.
    open->spin(kPercentReference)->setValue(12345678.0);
    QCOMPARE(open->takeSent(), sent("CALC:SCAL:REF 1.23457e+07,(@105)"));
}

void TestAdvancedSetting::commandHasFiveSeconds()
{
    OpenPanel open(0);
    open.takeCalls();
    open.list(kNplc)->setCurrentIndex(3);
    const QStringList timeouts =
        open.takeCalls().filter(QStringLiteral("viSetAttribute(100, 0x3FFF001A,"));
    QCOMPARE(timeouts, QStringList{QStringLiteral("viSetAttribute(100, 0x3FFF001A, 5000)")});
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

void TestAdvancedSetting::typedResistanceOutsideTheBandsIsNotKept()
{
    OpenPanel open(14);
    QDoubleSpinBox* box = open.spin(kRtd);
    box->setValue(1000.0);
    open.takeSent();
    auto* line = box->findChild<QLineEdit*>();
    line->selectAll();
    QTest::keyClicks(line, QStringLiteral("500"));
    QTest::keyClick(line, Qt::Key_Return);
    QCOMPARE(box->value(), 1000.0);
    QCOMPARE(line->text().toDouble(), 1000.0);
    QCOMPARE(open.takeSent(), QStringList());
    line->selectAll();
    QTest::keyClicks(line, QStringLiteral("99.25"));
    QTest::keyClick(line, Qt::Key_Return);
    QCOMPARE(box->value(), 99.25);
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:RTD:RES 99.25,(@105)"));
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

SCN_TEST(TestAdvancedSetting, QApplication)
#include "test_advancedsetting.moc"
