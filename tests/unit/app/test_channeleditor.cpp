#include "app/channeleditor.h"
#include "app/instrumentlink.h"
#include "channels/advancedsetting.h"
#include "common/guigate.h"
#include "fakedisplay.h"
#include "state/globals.h"
#include "support/hand.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "tablebench.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "windowbench.h"

#include <QCheckBox>
#include <QPushButton>
#include <QtTest>

#include <memory>

using namespace scn;

namespace {

/// The first channel, and its partner in the second bank.
constexpr int kChannel = 101;
constexpr int kPartner = 109;

constexpr char kFourWire[] = "四线ohm";

/// The last lines of a change on a channel that measures DC voltage.
QStringList change(const char* command)
{
    return texts({command, "SYST:ERR?"}) + voltageReadBack(kChannel);
}

/// An editor whose read-backs are noted, not shown, so that the rows stay as the test and the editor set them.
struct EditorBench : TableBench
{
    EditorBench() { link.discover(); }
    ~EditorBench() { gate->close(); }

    QStringList takeLines() { return instrument.takeLines(); }

    ChannelRow row() { return table.row(kChannel); }
    ChannelRow partner() { return table.row(kPartner); }

    /// Makes the channel four-wire, so that it has its partner.
    void pair()
    {
        choose(kFourWire);
        editor.changeFunction(kChannel, QString::fromUtf8(kFourWire));
        takeLines();
    }

    void choose(const char* function)
    {
        CustomComboBox* const box = row().function;
        box->setCurrentIndex(box->findText(QString::fromUtf8(function)));
    }

    FakeDisplay display;
    std::shared_ptr<GuiGate> gate = std::make_shared<GuiGate>();
    int losses = 0;
    InstrumentLink link{gate, display, [this] { ++losses; }};
    ChannelEditor editor{table, marks, partners, link};
};

} // namespace

/// What a change of a channel sends, and what it does to the row and its partner, without the window.
class TestChannelEditor : public QObject
{
    Q_OBJECT

private slots:
    void functionIsSentAndItsOptionsAreRead();
    void functionSendsItsSensorType();
    void fourWireFunctionTakesThePartner();
    void rangeIsSentFixedOrAutomatic();
    void partnersRangeGoesFirst();
    void temperatureUnitIsSent();
    void scalingIsSwitched();
    void scalingTakesTheUnitOfTheOtherBank();
    void scaleFunctionEnablesItsControls();
    void numberIsSent_data();
    void numberIsSent();
    void otherTextIsRefused();
    void unitIsSent();
    void panelsOpenBesideTheirButtons();
    void nothingSelectedSendsNothing();
    void lostLinkSendsNothing();
};

void TestChannelEditor::functionIsSentAndItsOptionsAreRead()
{
    EditorBench bench;
    QObject::connect(
        bench.row().function, &QComboBox::currentTextChanged, &bench.window,
        [&bench](const QString& name) { bench.editor.changeFunction(kChannel, name); });
    g_scanChannels = {{kChannel, QStringLiteral("Vdc")}};
    bench.row().scale->setChecked(true);
    bench.showRow(kChannel);
    bench.takeLines();
    bench.row().function->setFocus();
    hand::press(Qt::Key_Down);
    const QStringList lines = bench.takeLines();
    QCOMPARE(lines.mid(0, 3),
             texts({"FUNC \"VOLT:AC\",(@101)", "SYST:ERR?", "VOLT:AC:RANG:AUTO? (@101)"}));
    QCOMPARE(lines.mid(lines.size() - 9), scalingQueries(kChannel));
    QCOMPARE(g_scanChannels.value(kChannel), QStringLiteral("Vac"));
    QCOMPARE(bench.announcements, 1);
    QCOMPARE(bench.row().unit->currentText(), QStringLiteral("Vac"));
    QVERIFY(!bench.row().scale->isChecked());
}

void TestChannelEditor::functionSendsItsSensorType()
{
    EditorBench bench;
    bench.takeLines();
    bench.editor.changeFunction(kChannel, QStringLiteral("热电偶(类型J)"));
    QCOMPARE(bench.takeLines().mid(0, 4), texts({"FUNC \"TEMP:TC\",(@101)", "SYST:ERR?",
                                                 "TEMP:TRAN:TC:TYPE J,(@101)", "SYST:ERR?"}));
    QCOMPARE(WindowBench::itemsOf(bench.row().resolution), texts({"C", "F", "K"}));
    QCOMPARE(bench.row().range->count(), 0);
}

void TestChannelEditor::fourWireFunctionTakesThePartner()
{
    EditorBench bench;
    bench.tick(kPartner);
    g_scanChannels = {{kPartner, QStringLiteral("Vdc")}};
    bench.pair();
    QVERIFY(!bench.isRowEnabled(kPartner));
    QVERIFY(!bench.isTicked(kPartner));
    QVERIFY(g_scanChannels.isEmpty());
    QCOMPARE(bench.partner().function->currentText(), QString::fromUtf8(kFourWire));

    bench.choose("直流电压");
    bench.editor.changeFunction(kChannel, QStringLiteral("直流电压"));
    QVERIFY(bench.isRowEnabled(kPartner));
    QCOMPARE(bench.partner().function->currentText(), QStringLiteral("直流电压"));
}

void TestChannelEditor::rangeIsSentFixedOrAutomatic()
{
    EditorBench bench;
    QObject::connect(bench.row().range, qOverload<int>(&QComboBox::currentIndexChanged),
                     &bench.window,
                     [&bench](int index) { bench.editor.changeRange(kChannel, index); });
    bench.showRow(kChannel);
    bench.takeLines();
    bench.row().range->setFocus();
    hand::press(Qt::Key_Down);
    QCOMPARE(bench.takeLines(), change("VOLT:DC:RANG 0.1,(@101)"));
    hand::press(Qt::Key_Up);
    QCOMPARE(bench.takeLines(), change("VOLT:DC:RANG:AUTO ON,(@101)"));
}

void TestChannelEditor::partnersRangeGoesFirst()
{
    EditorBench bench;
    bench.pair();
    QObject::connect(bench.partner().range, qOverload<int>(&QComboBox::currentIndexChanged),
                     &bench.window,
                     [&bench](int index) { bench.editor.changeRange(kPartner, index); });
    bench.editor.changeRange(kChannel, 2);
    const QStringList lines = bench.takeLines();
    QCOMPARE(lines.filter(QStringLiteral("RANG ")),
             texts({"FRES:RANG 1000,(@109)", "FRES:RANG 1000,(@101)"}));
    QCOMPARE(bench.partner().range->currentIndex(), 2);
}

void TestChannelEditor::temperatureUnitIsSent()
{
    EditorBench bench;
    bench.editor.changeFunction(kChannel, QStringLiteral("温度二线制RTD"));
    QObject::connect(bench.row().resolution, qOverload<int>(&QComboBox::currentIndexChanged),
                     &bench.window,
                     [&bench](int index) { bench.editor.changeTemperatureUnit(kChannel, index); });
    bench.showRow(kChannel);
    bench.takeLines();
    bench.row().resolution->setFocus();
    hand::press(Qt::Key_Down);
    QCOMPARE(bench.takeLines(), change("UNIT:TEMP F,(@101)"));
}

void TestChannelEditor::scalingIsSwitched()
{
    EditorBench bench;
    QObject::connect(bench.row().scale, &QCheckBox::toggled, &bench.window,
                     [&bench](bool on) { bench.editor.changeScaling(kChannel, on); });
    bench.showRow(kChannel);
    bench.takeLines();
    bench.row().scale->setFocus();
    hand::press(Qt::Key_Space);
    QCOMPARE(bench.takeLines(), change("CALC:SCAL:STAT ON,(@101)"));
    hand::press(Qt::Key_Space);
    QCOMPARE(bench.takeLines(), change("CALC:SCAL:STAT OFF,(@101)"));
}

void TestChannelEditor::scalingTakesTheUnitOfTheOtherBank()
{
    EditorBench bench;
    bench.partner().unit->setCurrentText(QStringLiteral("K"));
    g_scanChannels = {{kChannel, QStringLiteral("K")}};
    bench.editor.changeScaling(kChannel, true);
    QCOMPARE(bench.announcements, 0);
    bench.partner().unit->setCurrentText(QStringLiteral("W"));
    bench.editor.changeScaling(kChannel, true);
    QCOMPARE(bench.announcements, 1);

    // The second bank has none: it takes the function's own.
    g_scanChannels = {{kPartner, QStringLiteral("Vdc")}};
    bench.editor.changeScaling(kPartner, true);
    QCOMPARE(bench.announcements, 1);
}

void TestChannelEditor::scaleFunctionEnablesItsControls()
{
    EditorBench bench;
    QObject::connect(bench.row().scaleFunction, qOverload<int>(&QComboBox::currentIndexChanged),
                     &bench.window,
                     [&bench](int index) { bench.editor.changeScaleFunction(kChannel, index); });
    bench.showRow(kChannel);
    bench.takeLines();
    bench.row().scaleFunction->setFocus();
    hand::press(Qt::Key_Down);
    QCOMPARE(bench.takeLines(), change("CALC:SCAL:FUNC PCT,(@101)"));
    QVERIFY(!bench.row().gain->isEnabled());
    QVERIFY(bench.row().scaleMore->isEnabled());
    hand::press(Qt::Key_Up);
    QCOMPARE(bench.takeLines(), change("CALC:SCAL:FUNC SCAL,(@101)"));
    QVERIFY(bench.row().gain->isEnabled());
    QVERIFY(!bench.row().scaleMore->isEnabled());
}

void TestChannelEditor::numberIsSent_data()
{
    QTest::addColumn<bool>("isGain");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("sent");
    QTest::newRow("gain") << true << "2.5"
                          << "CALC:SCAL:GAIN 2.5,(@101)";
    QTest::newRow("gain as it was typed") << true << "2.50e3"
                                          << "CALC:SCAL:GAIN 2.50e3,(@101)";
    QTest::newRow("blanks around it") << true << " 7 "
                                      << "CALC:SCAL:GAIN 7,(@101)";
    QTest::newRow("offset") << false << "-12"
                            << "CALC:SCAL:OFFS -12,(@101)";
}

void TestChannelEditor::numberIsSent()
{
    QFETCH(const bool, isGain);
    QFETCH(const QString, typed);
    QFETCH(const QString, sent);
    EditorBench bench;
    const CustomLineEdit* const edit = isGain ? bench.row().gain : bench.row().offset;
    bool isNumber = false;
    QObject::connect(edit, &CustomLineEdit::textChangedAndFocusOut, &bench.window,
                     [&](const QString& text) {
                         isNumber = isGain ? bench.editor.changeGain(kChannel, text)
                                           : bench.editor.changeOffset(kChannel, text);
                     });
    bench.showRow(kChannel);
    bench.takeLines();
    hand::click(edit);
    hand::press(Qt::Key_A, Qt::ControlModifier);
    hand::type(typed);
    QCOMPARE(bench.takeLines(), QStringList());
    hand::press(Qt::Key_Return);
    QVERIFY(isNumber);
    QCOMPARE(bench.takeLines(), change(qPrintable(sent)));
}

void TestChannelEditor::otherTextIsRefused()
{
    EditorBench bench;
    bench.takeLines();
    QVERIFY(!bench.editor.changeGain(kChannel, QStringLiteral("1,5")));
    QVERIFY(!bench.editor.changeOffset(kChannel, QStringLiteral("x")));
    QVERIFY(bench.editor.changeGain(kChannel, QStringLiteral("  ")));
    QVERIFY(bench.editor.changeOffset(kChannel, QString()));
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestChannelEditor::unitIsSent()
{
    EditorBench bench;
    QObject::connect(bench.row().unit, qOverload<int>(&QComboBox::currentIndexChanged),
                     &bench.window,
                     [&bench](int index) { bench.editor.changeUnit(kChannel, index); });
    g_scanChannels = {{kChannel, QStringLiteral("Vdc")}};
    bench.row().scale->setChecked(true);
    bench.showRow(kChannel);
    bench.takeLines();
    bench.row().unit->setFocus();
    // The row below "none".
    hand::press(Qt::Key_Down);
    QCOMPARE(bench.takeLines(), change("CALC:SCAL:UNIT \"#C\",(@101)"));
    QCOMPARE(g_scanChannels.value(kChannel), QStringLiteral("°C"));
    hand::press(Qt::Key_Up);
    QCOMPARE(bench.takeLines(), change("CALC:SCAL:UNIT \"\",(@101)"));
    QCOMPARE(g_scanChannels.value(kChannel), QStringLiteral(" "));
    QCOMPARE(bench.announcements, 2);
}

void TestChannelEditor::panelsOpenBesideTheirButtons()
{
    EditorBench bench;
    QObject::connect(bench.row().more, &QPushButton::clicked, &bench.window,
                     [&bench] { bench.editor.openFunctionPanel(kChannel, bench.row().more); });
    QObject::connect(bench.row().scaleMore, &QPushButton::clicked, &bench.window,
                     [&bench] { bench.editor.openScalePanel(kChannel, bench.row().scaleMore); });
    bench.row().scaleMore->setEnabled(true);
    bench.showRow(kChannel);
    hand::click(bench.row().more);
    QTRY_VERIFY(bench.row().functionPanel->isVisible());
    QVERIFY(!bench.row().scalePanel->isVisible());
    hand::press(Qt::Key_Escape);
    QTRY_VERIFY(!bench.row().functionPanel->isVisible());
    hand::click(bench.row().scaleMore);
    QTRY_VERIFY(bench.row().scalePanel->isVisible());
    bench.row().scalePanel->close();

    // A button without a panel opens none.
    bench.editor.openFunctionPanel(kChannel, bench.row().number);
    QVERIFY(!bench.row().functionPanel->isVisible());
}

void TestChannelEditor::nothingSelectedSendsNothing()
{
    EditorBench bench;
    bench.takeLines();
    bench.editor.changeRange(kChannel, -1);
    bench.editor.changeTemperatureUnit(kChannel, -1);
    bench.editor.changeScaleFunction(kChannel, -1);
    bench.editor.changeUnit(kChannel, -1);
    constexpr int kNoRow = 117;
    bench.editor.changeFunction(kNoRow, QStringLiteral("交流电压"));
    bench.editor.changeRange(kNoRow, 1);
    bench.editor.changeTemperatureUnit(kNoRow, 1);
    bench.editor.changeScaling(kNoRow, true);
    bench.editor.changeScaleFunction(kNoRow, 1);
    bench.editor.changeUnit(kNoRow, 1);
    QVERIFY(bench.editor.changeGain(kNoRow, QStringLiteral("2")));
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestChannelEditor::lostLinkSendsNothing()
{
    EditorBench bench;
    bench.link.giveUp();
    QCOMPARE(bench.losses, 1);
    bench.takeLines();
    bench.editor.changeFunction(kChannel, QStringLiteral("交流电压"));
    bench.editor.changeRange(kChannel, 1);
    bench.editor.changeGain(kChannel, QStringLiteral("2"));
    QCOMPARE(bench.takeLines(), QStringList());
}

SCN_TEST(TestChannelEditor, QApplication)
#include "test_channeleditor.moc"
