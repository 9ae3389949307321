// The panel under keys, wheel and mouse.
#include "openpanel.h"
#include "support/hand.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QLineEdit>
#include <QtTest>

#include <memory>
#include <optional>

namespace {

/// Clicks into a spin box, so that the text is selected for overwriting.
void enter(const QDoubleSpinBox* box)
{
    hand::click(box->findChild<QLineEdit*>());
    hand::press(Qt::Key_A, Qt::ControlModifier);
}

} // namespace

class TestAdvancedSettingHand : public QObject
{
    Q_OBJECT

private slots:
    void typedNumberIsSentOnce_data();
    void typedNumberIsSentOnce();
    void typedNumberIsSentOnLeaving_data();
    void typedNumberIsSentOnLeaving();
    void typedNumberIsDroppedOnClosing_data();
    void typedNumberIsDroppedOnClosing();
    void nothingIsSentWithoutAnInstrument();
    void typedResistanceIsCheckedWhole();
    void numberThatWasThereIsNotSent();
    void eachStepIsOneCommand();
    void readBackLeavesWhatIsBeingTyped();
    void readBackShowsARefusedNumber();
    void unfinishedNumberGoesWithThePanel();
    void wheelNeedsTheFocus_data();
    void wheelNeedsTheFocus();
    void wheelTurnsAListThatHasTheFocus();
    void restoredDelayIsAutomatic();
    void restoredDelayIsAutomaticAlsoWhereThePanelShowsIt();
};

void TestAdvancedSettingHand::typedNumberIsSentOnce_data()
{
    QTest::addColumn<int>("function");
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("command");
    QTest::newRow("delay") << 22 << kDelay << "1.5"
                           << "ROUT:CHAN:DEL 1.5,(@105)";
    QTest::newRow("junction") << 9 << kRefJunction << "-12.25"
                              << "TEMP:TRAN:TC:RJUN -12.25,(@105)";
    QTest::newRow("R0") << 14 << kRtd << "1000"
                        << "TEMP:TRAN:RTD:RES 1000,(@105)";
    QTest::newRow("gauge factor") << 26 << kGaugeFactor << "2.15"
                                  << "STR:GFAC 2.15,(@105)";
    QTest::newRow("gauge resistance") << 24 << kStrainResistance << "350"
                                      << "STR:RES 350,(@105)";
    QTest::newRow("Poisson ratio") << 30 << kPoisson << "0.25"
                                   << "STR:POIS 0.25,(@105)";
    QTest::newRow("excitation") << 26 << kDriveVoltage << "12"
                                << "STR:EXC 12,(@105)";
    QTest::newRow("dB reference") << -1 << kDbReference << "-20.5"
                                  << "CALC:SCAL:DB:REF -20.5,(@105)";
}

void TestAdvancedSettingHand::typedNumberIsSentOnce()
{
    QFETCH(const int, function);
    QFETCH(const QString, group);
    QFETCH(const QString, text);
    QFETCH(const QString, command);
    std::optional<OpenPanel> open;
    if (function >= 0) {
        open.emplace(function);
    } else {
        open.emplace(QStringLiteral("DB"));
    }
    open->panel().setDelayMode(1);
    open->panel().setRefJunctionFixed(true);
    QVERIFY(QTest::qWaitForWindowActive(&open->panel()));
    enter(open->spin(group));
    hand::type(text);
    QCOMPARE(open->takeSent(), QStringList());
    hand::press(Qt::Key_Return);
    QCOMPARE(open->takeSent(), (QStringList{command, kChanged}));
    // Leaving afterwards is not a second change.
    hand::press(Qt::Key_Tab);
    QVERIFY(!open->spin(group)->hasFocus());
    QCOMPARE(open->takeSent(), QStringList());
}

void TestAdvancedSettingHand::typedNumberIsSentOnLeaving_data()
{
    QTest::addColumn<QString>("how");
    for (const char* how : {"Tab", "another control", "button X", "press outside"}) {
        QTest::newRow(how) << QString::fromLatin1(how);
    }
}

void TestAdvancedSettingHand::typedNumberIsSentOnLeaving()
{
    QFETCH(const QString, how);
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    enter(open.spin(kDriveVoltage));
    hand::type(QStringLiteral("2.25"));
    if (how == QLatin1String("Tab")) {
        hand::press(Qt::Key_Tab);
    } else if (how == QLatin1String("another control")) {
        hand::click(open.spin(kGaugeFactor)->findChild<QLineEdit*>());
    } else if (how == QLatin1String("button X")) {
        hand::click(open.button(QStringLiteral("X")));
        QVERIFY(!open.panel().isVisible());
    } else {
        hand::click(&open.panel(), QPoint(-20, -20));
        QVERIFY(!open.panel().isVisible());
    }
    QCOMPARE(open.takeSent(), sent("STR:EXC 2.25,(@105)"));
}

void TestAdvancedSettingHand::typedNumberIsDroppedOnClosing_data()
{
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("Escape") << true;
    QTest::newRow("closed by the program") << false;
}

void TestAdvancedSettingHand::typedNumberIsDroppedOnClosing()
{
    QFETCH(const bool, byEscape);
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    enter(open.spin(kDriveVoltage));
    hand::type(QStringLiteral("2.2"));
    if (byEscape) {
        hand::press(Qt::Key_Escape);
    } else {
        open.panel().close();
    }
    QVERIFY(!open.panel().isVisible());
    QCOMPARE(open.takeSent(), QStringList());
    // Reopened, the panel shows the number in effect, and leaving it changes nothing.
    open.panel().show();
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    QCOMPARE(open.spin(kDriveVoltage)->text(), QStringLiteral("5.000"));
    hand::press(Qt::Key_Tab);
    hand::click(open.button(QStringLiteral("X")));
    QVERIFY(!open.panel().isVisible());
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSettingHand::nothingIsSentWithoutAnInstrument()
{
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    g_instrumentConnected = false;
    enter(open.spin(kDriveVoltage));
    hand::type(QStringLiteral("2.25"));
    hand::press(Qt::Key_Return);
    open.list(kNplc)->setFocus(Qt::TabFocusReason);
    hand::press(Qt::Key_Down);
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSettingHand::typedResistanceIsCheckedWhole()
{
    OpenPanel open(14);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    const QDoubleSpinBox* const box = open.spin(kRtd);
    enter(box);
    hand::type(QStringLiteral("1000"));
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(), sent("TEMP:TRAN:RTD:RES 1000,(@105)"));
    enter(box);
    hand::type(QStringLiteral("500"));
    hand::press(Qt::Key_Return);
    QCOMPARE(box->value(), 1000.0);
    QCOMPARE(box->text().toDouble(), 1000.0);
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSettingHand::numberThatWasThereIsNotSent()
{
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    enter(open.spin(kDriveVoltage));
    hand::type(QStringLiteral("5"));
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(), QStringList());
    QCOMPARE(open.spin(kDriveVoltage)->text(), QStringLiteral("5.000"));
}

void TestAdvancedSettingHand::eachStepIsOneCommand()
{
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    const QDoubleSpinBox* const box = open.spin(kDriveVoltage);
    enter(box);
    hand::press(Qt::Key_Up);
    QCOMPARE(open.takeSent(), sent("STR:EXC 6,(@105)"));
    hand::press(Qt::Key_Down);
    QCOMPARE(open.takeSent(), sent("STR:EXC 5,(@105)"));
    hand::turnWheel(box, 2);
    QCOMPARE(open.takeSent(), sent("STR:EXC 6,(@105)") + sent("STR:EXC 7,(@105)"));
    // A step starts from what has been typed, in one command.
    enter(box);
    hand::type(QStringLiteral("2"));
    hand::press(Qt::Key_Up);
    QCOMPARE(open.takeSent(), sent("STR:EXC 3,(@105)"));
    // The box's own arrows.
    hand::click(box, QPoint(box->width() - 5, 5));
    QCOMPARE(open.takeSent(), sent("STR:EXC 4,(@105)"));
}

void TestAdvancedSettingHand::readBackLeavesWhatIsBeingTyped()
{
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    const QDoubleSpinBox* const box = open.spin(kDriveVoltage);
    const auto* const line = box->findChild<QLineEdit*>();
    enter(box);
    hand::type(QStringLiteral("1.5"));
    hand::press(Qt::Key_Left);
    open.panel().setDriveVoltage(3.0);
    open.panel().setGaugeFactor(3.0);
    QCOMPARE(line->text(), QStringLiteral("1.5"));
    hand::type(QStringLiteral("2"));
    QCOMPARE(line->text(), QStringLiteral("1.25"));
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(), sent("STR:EXC 1.25,(@105)"));
    QCOMPARE(open.spin(kGaugeFactor)->value(), 3.0);
    // What was reported meanwhile counts as the previous number.
    enter(box);
    hand::type(QStringLiteral("7"));
    open.panel().setDriveVoltage(7.0);
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(), QStringList());
    enter(box);
    hand::type(QStringLiteral("7"));
    open.panel().setDriveVoltage(8.0);
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(), sent("STR:EXC 7,(@105)"));
}

void TestAdvancedSettingHand::readBackShowsARefusedNumber()
{
    OpenPanel open(26);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    QDoubleSpinBox* const box = open.spin(kDriveVoltage);
    connect(&open.panel(), &AdvancedSetting::sigComponentChanged, box,
            [&open] { open.panel().setDriveVoltage(5.0); });
    enter(box);
    hand::type(QStringLiteral("9.000"));
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(), sent("STR:EXC 9,(@105)"));
    QCOMPARE(box->text(), QStringLiteral("5.000"));
}

void TestAdvancedSettingHand::unfinishedNumberGoesWithThePanel()
{
    OpenPanel instrument(26);
    instrument.panel().close();
    auto panel = std::make_unique<AdvancedSetting>();
    panel->showFunctionOptions(QStringLiteral("name"), 26, 106);
    panel->show();
    QVERIFY(QTest::qWaitForWindowActive(panel.get()));
    for (const QGroupBox* group : panel->findChildren<QGroupBox*>()) {
        if (group->title() == kDriveVoltage) {
            enter(group->findChild<QDoubleSpinBox*>());
        }
    }
    hand::type(QStringLiteral("9"));
    panel.reset();
    QCOMPARE(instrument.takeSent(), QStringList());
}

void TestAdvancedSettingHand::wheelNeedsTheFocus_data()
{
    QTest::addColumn<int>("function");
    QTest::addColumn<QString>("group");
    QTest::newRow("list") << 0 << kNplc;
    QTest::newRow("number") << 26 << kDriveVoltage;
}

void TestAdvancedSettingHand::wheelNeedsTheFocus()
{
    QFETCH(const int, function);
    QFETCH(const QString, group);
    OpenPanel open(function);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    open.panel().setFocus(Qt::OtherFocusReason);
    QWidget* control = open.spin(group);
    if (!control) {
        control = open.list(group);
    }
    hand::turnWheel(control, -2);
    hand::turnWheel(control, 1);
    QVERIFY(!control->hasFocus());
    QCOMPARE(open.takeSent(), QStringList());
}

void TestAdvancedSettingHand::wheelTurnsAListThatHasTheFocus()
{
    OpenPanel open(0);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    open.list(kNplc)->setFocus(Qt::TabFocusReason);
    hand::turnWheel(open.list(kNplc), -2);
    QCOMPARE(open.takeSent(), sent("VOLT:NPLC 10,(@105)") + sent("VOLT:NPLC 100,(@105)"));
}

/// Setting a delay turns the automatic one off in the instrument.
void TestAdvancedSettingHand::restoredDelayIsAutomatic()
{
    OpenPanel open(22);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    open.list(kDelay)->setFocus(Qt::TabFocusReason);
    hand::press(Qt::Key_Down);
    enter(open.spin(kDelay));
    hand::type(QStringLiteral("3"));
    hand::press(Qt::Key_Return);
    QCOMPARE(open.takeSent(),
             sent("ROUT:CHAN:DEL:AUTO OFF,(@105)") + sent("ROUT:CHAN:DEL 3,(@105)"));
    hand::click(open.button(QStringLiteral("恢复默认值")));
    QCOMPARE(open.takeSent(),
             sent("ROUT:CHAN:DEL 0,(@105)") + sent("ROUT:CHAN:DEL:AUTO ON,(@105)"));
    QCOMPARE(open.list(kDelay)->currentText(), QStringLiteral("自动"));
    QVERIFY(!open.spin(kDelay)->isEnabled());
}

void TestAdvancedSettingHand::restoredDelayIsAutomaticAlsoWhereThePanelShowsIt()
{
    OpenPanel open(22);
    QVERIFY(QTest::qWaitForWindowActive(&open.panel()));
    open.panel().setDelayValue(3.0);
    hand::click(open.button(QStringLiteral("恢复默认值")));
    QCOMPARE(open.takeSent(),
             sent("ROUT:CHAN:DEL 0,(@105)") + sent("ROUT:CHAN:DEL:AUTO ON,(@105)"));
    hand::click(open.button(QStringLiteral("恢复默认值")));
    QCOMPARE(open.takeSent(), QStringList());
}

SCN_TEST(TestAdvancedSettingHand, QApplication)
#include "test_advancedsettinghand.moc"
