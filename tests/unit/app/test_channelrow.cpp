#include "app/mainwidget.h"
#include "channels/advancedsetting.h"
#include "channels/commfunc.h"
#include "plot/datanetwork.h"
#include "plot/graphicsettingwidget.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "widgets/custommessagedialog.h"
#include "windowbench.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>

#include <initializer_list>

using namespace scn;

namespace {

/// Two channels whose only function counts as DC voltage, for everything that needs no other
/// function.
constexpr char kTwoChannels[] = "SCN4005A";
/// Two banks of eight channels with all functions but currents.
constexpr char kAllFunctions[] = "SCN4002A";
/// Two banks of ten channels.
constexpr char kTwentyChannels[] = "SCN4000A";

/// A module in slot 1.
struct OneModule : WindowBench
{
    explicit OneModule(const char* model)
    {
        instrument().putModule(1, QString::fromLatin1(model));
        open();
    }

    void select(int channel, ChannelColumn column, const char* text)
    {
        QComboBox* const control = box(channel, column);
        const int row = control->findText(QString::fromUtf8(text));
        QVERIFY2(row >= 0, text);
        control->setCurrentIndex(row);
    }

    /// Types a text into an edit and leaves it, as a user does.
    void enter(int channel, ChannelColumn column, const QString& text)
    {
        CustomLineEdit* const control = edit(channel, column);
        control->setText(text);
        emit control->textChangedAndFocusOut(text);
    }

    /// Makes a channel four-wire on the instrument and in the table, and reads its partner back.
    void makeFourWire(int channel, int partner, const char* name, const char* function)
    {
        const QString reply = QStringLiteral("\"%1\"").arg(QString::fromLatin1(function));
        instrument().setReply(QStringLiteral("FUNC? (@%1)").arg(channel), reply);
        instrument().setReply(QStringLiteral("FUNC? (@%1)").arg(partner), reply);
        select(channel, FunctionColumn, name);
        readBack(partner);
        instrument().takeLines();
    }

    QStringList takeLines() { return instrument().takeLines(); }
};

/// The last lines of each change on a channel that measures DC voltage.
QStringList closing(int channel)
{
    return texts({"SYST:ERR?"}) + voltageReadBack(channel);
}

/// The complete read-back of a channel that measures four-wire resistance.
QStringList fourWireReadBack(int channel)
{
    QStringList lines;
    for (const char* query :
         {"ROUT:CHAN:LAB? (@%1)", "FUNC? (@%1)", "FRES:RANG:AUTO? (@%1)", "FRES:RANG? (@%1)",
          "ROUT:CHAN:DEL:AUTO? (@%1)", "FRES:NPLC? (@%1)", "FRES:OCOM? (@%1)"}) {
        lines.append(QString::fromLatin1(query).arg(channel));
    }
    return lines + scalingQueries(channel);
}

QStringList fourWireClosing(int channel)
{
    return texts({"SYST:ERR?"}) + fourWireReadBack(channel);
}

/// The columns after the check mark whose control is enabled.
QList<int> enabledColumns(const WindowBench& bench, int channel)
{
    QList<int> columns;
    for (int column = 1; column < ChannelColumnCount; ++column) {
        const QWidget* control = bench.tree()->itemWidget(bench.item(channel), column);
        if (control && control->isEnabled()) {
            columns.append(column);
        }
    }
    return columns;
}

bool isCheckable(const WindowBench& bench, int channel)
{
    return bench.item(channel)->flags() & Qt::ItemIsUserCheckable;
}

/// Counts notifications of the workspace about the scan list: each refills a data grid's box.
class WorkspaceSpy
{
public:
    explicit WorkspaceSpy(const WindowBench& bench)
    {
        auto* workspace = bench.window().findChild<GraphicSettingWidget*>();
        QMetaObject::invokeMethod(workspace, "recvDataNetworkBtnSlots");
        const auto* table = workspace->findChild<DataNetwork*>()->findChild<QTableWidget*>();
        auto* box = qobject_cast<QComboBox*>(table->cellWidget(0, 1));
        m_spy = std::make_unique<QSignalSpy>(box->model(), &QAbstractItemModel::rowsInserted);
    }

    bool takeTold()
    {
        const bool told = !m_spy->isEmpty();
        m_spy->clear();
        return told;
    }

private:
    std::unique_ptr<QSignalSpy> m_spy;
};

} // namespace

/// Editing one channel: what is sent to the instrument, and what the row then shows.
class TestChannelRow : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void functionIsSentAndItsOptionsReadBack_data();
    void functionIsSentAndItsOptionsReadBack();
    void rowFollowsTheNewFunctionBeforeTheCommand();
    void functionsUnitGoesIntoTheScanList();
    void chosenSensorTypeStays();
    void functionPanelFollows();

    void fourWireTakesThePartnerOutOfUse();
    void twoWireGivesThePartnerBack();
    void partnersReadBackStillRuns();
    void secondHalfHasNoPartner_data();
    void secondHalfHasNoPartner();

    void rangeIsSent_data();
    void rangeIsSent();
    void refusedRangeShowsTheInstruments();
    void fourWireRangeGoesToThePartnerFirst_data();
    void fourWireRangeGoesToThePartnerFirst();
    void temperatureUnitIsSent();
    void fourWireTemperatureUnitIsMirrored();

    void scaleFunctionIsSent();
    void scaleFunctionDecidesWhatCanBeEdited();
    void fourWireScaleFunctionIsMirrored();
    void scalingIsSwitched();
    void scalingDoesNotReachThePartner();
    void scalingTellsTheWorkspaceOfAnotherUnit();
    void scalingInTheSecondHalfHasTheBaseUnit();

    void gainAndOffsetAreSentAsTyped_data();
    void gainAndOffsetAreSentAsTyped();
    void otherTextsAreRefused_data();
    void otherTextsAreRefused();
    void fourWireGainAndOffsetAreMirrored();

    void unitIsSentInTheInstrumentsSpelling_data();
    void unitIsSentInTheInstrumentsSpelling();
    void unitGoesIntoTheScanList();
    void fourWireUnitGoesToThePartnerFirst();

    void nameIsOnlyLogged();
    void panelOpensBesideItsButton_data();
    void panelOpensBesideItsButton();
    void changeInThePanelReadsTheChannelBack();
    void numberSendsNothing();
};

void TestChannelRow::cleanup()
{
    while (QWidget* popup = QApplication::activePopupWidget()) {
        popup->close();
    }
}

void TestChannelRow::functionIsSentAndItsOptionsReadBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("function") << QStringLiteral("交流电压")
                              << texts({"FUNC \"VOLT:AC\",(@101)", "SYST:ERR?",
                                        "VOLT:AC:RANG:AUTO? (@101)", "VOLT:AC:RANG? (@101)",
                                        "ROUT:CHAN:DEL:AUTO? (@101)", "VOLT:AC:BAND? (@101)"});
    QTest::newRow("thermocouple") << QStringLiteral("热电偶(类型T)")
                                  << texts({"FUNC \"TEMP:TC\",(@101)", "SYST:ERR?",
                                            "TEMP:TRAN:TC:TYPE T,(@101)", "SYST:ERR?",
                                            "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
                                            "UNIT:TEMP? (@101)", "TEMP:TRAN:TC:RJUN:TYPE? (@101)",
                                            "TEMP:TRAN:TC:RJUN? (@101)"});
    QTest::newRow("thermistor") << QStringLiteral("热敏电阻(2.2K)")
                                << texts({"FUNC \"TEMP:THER\",(@101)", "SYST:ERR?",
                                          "TEMP:TRAN:THER:TYPE +2252,(@101)", "SYST:ERR?",
                                          "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
                                          "UNIT:TEMP? (@101)"});
    QTest::newRow("four-wire thermistor")
        << QStringLiteral("4线制热敏电阻(5K)")
        << texts({"FUNC \"TEMP:FTH\",(@101)", "SYST:ERR?", "TEMP:TRAN:FTH:TYPE +5000,(@101)",
                  "SYST:ERR?", "ROUT:CHAN:DEL:AUTO? (@101)", "TEMP:NPLC? (@101)",
                  "UNIT:TEMP? (@101)"});
    QTest::newRow("diode") << QStringLiteral("二极管")
                           << texts({"FUNC \"DIOD\",(@101)", "SYST:ERR?",
                                     "ROUT:CHAN:DEL:AUTO? (@101)"});
}

void TestChannelRow::functionIsSentAndItsOptionsReadBack()
{
    QFETCH(QString, name);
    QFETCH(QStringList, lines);
    OneModule bench(kAllFunctions);
    bench.select(101, FunctionColumn, name.toUtf8().constData());
    QCOMPARE(bench.takeLines(), lines + scalingQueries(101));
    // Only the options are read back, so the chosen member of a family stays.
    QCOMPARE(bench.box(101, FunctionColumn)->currentText(), name);
}

void TestChannelRow::rowFollowsTheNewFunctionBeforeTheCommand()
{
    OneModule bench(kAllFunctions);
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT? (@101)"), QStringLiteral("1"));
    bench.readBack(101);
    QVERIFY(bench.cell<QCheckBox>(101, ScaleColumn)->isChecked());
    QStringList ranges;
    QStringList temperatureUnits;
    QStringList scaleFunctions;
    QString unit;
    bool isScaled = true;
    bench.instrument().whenAsked(QStringLiteral("FUNC \"TEMP:RTD\",(@101)"), [&] {
        ranges = WindowBench::itemsOf(bench.box(101, RangeColumn));
        temperatureUnits = WindowBench::itemsOf(bench.box(101, ResolutionColumn));
        scaleFunctions = WindowBench::itemsOf(bench.box(101, ScaleFunctionColumn));
        unit = bench.box(101, UnitColumn)->currentText();
        isScaled = bench.cell<QCheckBox>(101, ScaleColumn)->isChecked();
    });
    bench.takeLines();
    bench.select(101, FunctionColumn, "温度二线制RTD");
    QCOMPARE(ranges, QStringList());
    QCOMPARE(temperatureUnits, texts({"C", "F", "K"}));
    QCOMPARE(scaleFunctions, texts({"SCAL", "PCT"}));
    QCOMPARE(unit, QStringLiteral("°C"));
    QVERIFY(!isScaled);
    // None of it was a command.
    QCOMPARE(bench.takeLines().first(), QStringLiteral("FUNC \"TEMP:RTD\",(@101)"));
}

void TestChannelRow::functionsUnitGoesIntoTheScanList()
{
    OneModule bench(kAllFunctions);
    bench.tick(101);
    WorkspaceSpy workspace(bench);
    bench.select(101, FunctionColumn, "双线ohm");
    QCOMPARE(g_scanChannels, (QMap<int, QString>{{101, QStringLiteral("Ohm")}}));
    QVERIFY(workspace.takeTold());
    // A channel that is not in the scan list does not enter it.
    bench.select(102, FunctionColumn, "双线ohm");
    QCOMPARE(g_scanChannels.keys(), QList<int>{101});
    QVERIFY(!workspace.takeTold());
}

void TestChannelRow::chosenSensorTypeStays()
{
    OneModule bench(kAllFunctions);
    bench.instrument().setReply(QStringLiteral("FUNC?"), QStringLiteral("\"TEMP:THER\""));
    bench.select(101, FunctionColumn, "热敏电阻(2.2K)");
    QCOMPARE(bench.box(101, FunctionColumn)->currentText(), QStringLiteral("热敏电阻(2.2K)"));
    bench.select(101, FunctionColumn, "热敏电阻(5K)");
    QCOMPARE(bench.box(101, FunctionColumn)->currentText(), QStringLiteral("热敏电阻(5K)"));
}

void TestChannelRow::functionPanelFollows()
{
    OneModule bench(kAllFunctions);
    bench.select(101, FunctionColumn, "频率");
    const AdvancedSetting* panel = bench.openPanel(101, MoreColumn);
    QVERIFY(panel);
    QCOMPARE(WindowBench::choiceOf(panel, QStringLiteral("频率下限")),
             QStringLiteral("200Hz(高速)"));
}

void TestChannelRow::fourWireTakesThePartnerOutOfUse()
{
    OneModule bench(kTwentyChannels);
    bench.tick(105);
    bench.tick(115);
    bench.takeLines();
    bench.select(105, FunctionColumn, "四线ohm");
    QCOMPARE(bench.takeLines(),
             texts({"ROUT:SCAN (@105)", "SYST:ERR?", "FUNC \"FRES\",(@105)", "SYST:ERR?"}) +
                 fourWireReadBack(105).mid(2));
    QCOMPARE(enabledColumns(bench, 115), QList<int>());
    QVERIFY(!isCheckable(bench, 115));
    QCOMPARE(bench.item(115)->checkState(ScanColumn), Qt::Unchecked);
    QCOMPARE(g_scanChannels, (QMap<int, QString>{{105, QStringLiteral("Ohm")}}));
    // The partner shows the channel's own list and choice.
    QCOMPARE(WindowBench::itemsOf(bench.box(115, FunctionColumn)),
             WindowBench::itemsOf(bench.box(105, FunctionColumn)));
    QCOMPARE(bench.box(115, FunctionColumn)->currentText(), QStringLiteral("四线ohm"));
    // The neighbours stay.
    QVERIFY(isCheckable(bench, 114) && isCheckable(bench, 116) && isCheckable(bench, 105));
    QVERIFY(!enabledColumns(bench, 114).isEmpty());
}

void TestChannelRow::twoWireGivesThePartnerBack()
{
    OneModule bench(kTwentyChannels);
    const QList<int> enabledBefore = enabledColumns(bench, 115);
    bench.tick(115);
    bench.select(105, FunctionColumn, "四线ohm");
    bench.takeLines();
    bench.select(105, FunctionColumn, "双线ohm");
    // The partner gets no command, and its tick does not return.
    QCOMPARE(bench.takeLines().mid(0, 3),
             texts({"FUNC \"RES\",(@105)", "SYST:ERR?", "RES:RANG:AUTO? (@105)"}));
    QVERIFY(isCheckable(bench, 115));
    QCOMPARE(bench.item(115)->checkState(ScanColumn), Qt::Unchecked);
    QCOMPARE(WindowBench::itemsOf(bench.box(115, FunctionColumn)), CommFunc().functionList(115));
    QCOMPARE(bench.box(115, FunctionColumn)->currentIndex(), 0);
    // All of its controls are enabled, the scaling button too.
    QCOMPARE(enabledColumns(bench, 115), enabledBefore + QList<int>{ScaleMoreColumn});
}

void TestChannelRow::partnersReadBackStillRuns()
{
    OneModule bench(kTwentyChannels);
    bench.select(105, FunctionColumn, "四线ohm");
    bench.takeLines();
    bench.loseAndRecover();
    const QStringList lines = bench.takeLines();
    for (const QString& line : voltageReadBack(115)) {
        QVERIFY2(lines.contains(line), qPrintable(line));
    }
}

void TestChannelRow::secondHalfHasNoPartner_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("command");
    QTest::newRow("second bank") << QByteArray("SCN4001A") << 111 << QStringLiteral("双线ohm")
                                 << QStringLiteral("FUNC \"RES\",(@111)");
    QTest::newRow("behind the banks") << QByteArray("SCN4001A") << 121 << QStringLiteral("交流电流")
                                      << QStringLiteral("FUNC \"CURR:AC\",(@121)");
    QTest::newRow("behind the banks, last")
        << QByteArray("SCN4001A") << 122 << QStringLiteral("交流电流")
        << QStringLiteral("FUNC \"CURR:AC\",(@122)");
}

void TestChannelRow::secondHalfHasNoPartner()
{
    QFETCH(QByteArray, model);
    QFETCH(int, channel);
    QFETCH(QString, name);
    QFETCH(QString, command);
    OneModule bench(model.constData());
    QMap<int, QString> functions;
    for (int other = 101; other <= 122; ++other) {
        functions.insert(other, bench.box(other, FunctionColumn)->currentText());
    }
    bench.select(channel, FunctionColumn, name.toUtf8().constData());
    QCOMPARE(bench.takeLines().first(), command);
    functions[channel] = name;
    for (int other = 101; other <= 122; ++other) {
        QCOMPARE(bench.box(other, FunctionColumn)->currentText(), functions.value(other));
        QVERIFY(isCheckable(bench, other));
    }
}

void TestChannelRow::rangeIsSent_data()
{
    QTest::addColumn<QString>("range");
    QTest::addColumn<QString>("command");
    QTest::newRow("100 mV") << QStringLiteral("+/-100mV")
                            << QStringLiteral("VOLT:DC:RANG 0.1,(@101)");
    QTest::newRow("10 V") << QStringLiteral("+/-10V") << QStringLiteral("VOLT:DC:RANG 10,(@101)");
    QTest::newRow("300 V") << QStringLiteral("+/-300V")
                           << QStringLiteral("VOLT:DC:RANG 300,(@101)");
    QTest::newRow("automatic") << QStringLiteral("自动")
                               << QStringLiteral("VOLT:DC:RANG:AUTO ON,(@101)");
}

void TestChannelRow::rangeIsSent()
{
    QFETCH(QString, range);
    QFETCH(QString, command);
    OneModule bench(kTwoChannels);
    {
        // From another row than the wanted one.
        CustomComboBox* box = bench.box(101, RangeColumn);
        const QSignalBlocker blocker(box);
        box->setCurrentIndex(2);
    }
    bench.select(101, RangeColumn, range.toUtf8().constData());
    QCOMPARE(bench.takeLines(), QStringList(command) + closing(101));
}

void TestChannelRow::refusedRangeShowsTheInstruments()
{
    OneModule bench(kTwoChannels);
    bench.instrument().setReply(QStringLiteral("VOLT:DC:RANG:AUTO?"), QStringLiteral("0"));
    bench.instrument().setReply(QStringLiteral("VOLT:DC:RANG?"), QStringLiteral("+1.0E+00"));
    bench.instrument().setReply(QStringLiteral("SYST:ERR?"),
                                QStringLiteral("-222,\"Data out of range\""));
    bench.select(101, RangeColumn, "+/-300V");
    QCOMPARE(bench.box(101, RangeColumn)->currentText(), QStringLiteral("+/-1V"));
    QCOMPARE(bench.message(), QString());
}

void TestChannelRow::fourWireRangeGoesToThePartnerFirst_data()
{
    QTest::addColumn<bool>("partnerWasReadBack");
    QTest::addColumn<QString>("range");
    QTest::addColumn<QString>("value");
    QTest::newRow("partner with the same list")
        << true << QStringLiteral("1K") << QStringLiteral("1000");
    // It still lists the six ranges of a voltage.
    QTest::newRow("partner with a shorter list")
        << false << QStringLiteral("1G") << QStringLiteral("1e+09");
}

void TestChannelRow::fourWireRangeGoesToThePartnerFirst()
{
    QFETCH(bool, partnerWasReadBack);
    QFETCH(QString, range);
    QFETCH(QString, value);
    OneModule bench(kAllFunctions);
    bench.instrument().setReply(QStringLiteral("FUNC?"), QStringLiteral("\"FRES\""));
    bench.select(103, FunctionColumn, "四线ohm");
    if (partnerWasReadBack) {
        bench.readBack(111);
    }
    bench.takeLines();
    bench.select(103, RangeColumn, range.toUtf8().constData());
    QCOMPARE(bench.takeLines(), QStringList(QStringLiteral("FRES:RANG %1,(@111)").arg(value)) +
                                    fourWireClosing(111) +
                                    QStringList(QStringLiteral("FRES:RANG %1,(@103)").arg(value)) +
                                    fourWireClosing(103));
}

void TestChannelRow::temperatureUnitIsSent()
{
    OneModule bench(kTwoChannels);
    bench.instrument().setReply(QStringLiteral("FUNC? (@101)"), QStringLiteral("\"TEMP:RTD\""));
    bench.readBack(101);
    bench.takeLines();
    bench.select(101, ResolutionColumn, "K");
    QCOMPARE(bench.takeLines().mid(0, 4),
             texts({"UNIT:TEMP K,(@101)", "SYST:ERR?", "ROUT:CHAN:LAB? (@101)", "FUNC? (@101)"}));
    // The row shows what the instrument reports.
    QCOMPARE(bench.box(101, ResolutionColumn)->currentText(), QStringLiteral("C"));
}

void TestChannelRow::fourWireTemperatureUnitIsMirrored()
{
    OneModule bench(kAllFunctions);
    bench.makeFourWire(102, 110, "温度四线制RTD", "TEMP:FRTD");
    bench.select(102, ResolutionColumn, "F");
    QCOMPARE(bench.box(110, ResolutionColumn)->currentText(), QStringLiteral("F"));
    const QStringList lines = bench.takeLines();
    QCOMPARE(lines.first(), QStringLiteral("UNIT:TEMP F,(@102)"));
    QVERIFY(lines.filter(QStringLiteral("(@110)")).isEmpty());
}

void TestChannelRow::scaleFunctionIsSent()
{
    OneModule bench(kTwoChannels);
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC? (@101)"), QStringLiteral("DBM"));
    bench.select(101, ScaleFunctionColumn, "DBM");
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:FUNC DBM,(@101)"}) + closing(101));
    QCOMPARE(bench.box(101, ScaleFunctionColumn)->currentText(), QStringLiteral("DBM"));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC? (@101)"), QStringLiteral("SCAL"));
    bench.select(101, ScaleFunctionColumn, "SCAL");
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:FUNC SCAL,(@101)"}) + closing(101));
}

void TestChannelRow::scaleFunctionDecidesWhatCanBeEdited()
{
    OneModule bench(kTwoChannels);
    const auto canEdit = [&bench] {
        return QList<bool>{bench.edit(101, GainColumn)->isEnabled(),
                           bench.edit(101, OffsetColumn)->isEnabled(),
                           bench.cell<QPushButton>(101, ScaleMoreColumn)->isEnabled()};
    };
    QCOMPARE(canEdit(), (QList<bool>{true, true, false}));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC? (@101)"), QStringLiteral("PCT"));
    bench.select(101, ScaleFunctionColumn, "PCT");
    QCOMPARE(canEdit(), (QList<bool>{false, false, true}));
    const AdvancedSetting* panel = bench.openPanel(101, ScaleMoreColumn);
    QVERIFY(panel);
    QCOMPARE(WindowBench::numberOf(panel, QStringLiteral("参考值")), 0.0);
    // The instrument refuses the next choice, and then takes it.
    bench.select(101, ScaleFunctionColumn, "SCAL");
    QCOMPARE(canEdit(), (QList<bool>{false, false, true}));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC? (@101)"), QStringLiteral("SCAL"));
    bench.select(101, ScaleFunctionColumn, "SCAL");
    QCOMPARE(canEdit(), (QList<bool>{true, true, false}));
}

void TestChannelRow::fourWireScaleFunctionIsMirrored()
{
    OneModule bench(kAllFunctions);
    bench.makeFourWire(101, 109, "四线ohm", "FRES");
    bench.select(101, ScaleFunctionColumn, "PCT");
    QCOMPARE(bench.box(109, ScaleFunctionColumn)->currentText(), QStringLiteral("PCT"));
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:FUNC PCT,(@101)"}) + fourWireClosing(101));
}

void TestChannelRow::scalingIsSwitched()
{
    OneModule bench(kTwoChannels);
    auto* check = bench.cell<QCheckBox>(101, ScaleColumn);
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT? (@101)"), QStringLiteral("1"));
    check->click();
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:STAT ON,(@101)"}) + closing(101));
    QVERIFY(check->isChecked());
    check->click();
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:STAT OFF,(@101)"}) + closing(101));
    // Refused: the instrument still scales.
    QVERIFY(check->isChecked());
}

void TestChannelRow::scalingDoesNotReachThePartner()
{
    OneModule bench(kAllFunctions);
    bench.makeFourWire(101, 109, "四线ohm", "FRES");
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT? (@101)"), QStringLiteral("1"));
    bench.cell<QCheckBox>(101, ScaleColumn)->click();
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:STAT ON,(@101)"}) + fourWireClosing(101));
    QVERIFY(!bench.cell<QCheckBox>(109, ScaleColumn)->isChecked());
}

void TestChannelRow::scalingTellsTheWorkspaceOfAnotherUnit()
{
    OneModule bench(kTwoChannels);
    bench.tick(101);
    WorkspaceSpy workspace(bench);
    auto* check = bench.cell<QCheckBox>(101, ScaleColumn);
    // The unit used is that of the row one bank further on, whatever the function.
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT? (@101)"), QStringLiteral("\"W\""));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT? (@102)"),
                                QStringLiteral("\"Vdc\""));
    bench.readBack(101);
    bench.readBack(102);
    check->click();
    QVERIFY(!workspace.takeTold());
    QCOMPARE(g_scanChannels.value(101), QStringLiteral("Vdc"));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT? (@102)"), QStringLiteral("\"K\""));
    bench.readBack(102);
    check->click();
    QVERIFY(workspace.takeTold());
    // The new unit is stored by the next rebuild of the scan list.
    QCOMPARE(g_scanChannels.value(101), QStringLiteral("Vdc"));
    // With scaling off it is the base unit. The instrument goes on scaling, so each click is
    // another "off".
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT? (@101)"), QStringLiteral("1"));
    bench.readBack(101);
    check->click();
    QVERIFY(!workspace.takeTold());
    g_scanChannels[101] = QStringLiteral("K");
    check->click();
    QVERIFY(workspace.takeTold());
}

void TestChannelRow::scalingInTheSecondHalfHasTheBaseUnit()
{
    OneModule bench(kTwoChannels);
    bench.tick(102);
    WorkspaceSpy workspace(bench);
    bench.cell<QCheckBox>(102, ScaleColumn)->click();
    QCOMPARE(bench.takeLines().mid(2), texts({"CALC:SCAL:STAT ON,(@102)"}) + closing(102));
    QVERIFY(!workspace.takeTold());
    // Querying a channel that is not in the scan list does not add it.
    bench.cell<QCheckBox>(101, ScaleColumn)->click();
    QCOMPARE(g_scanChannels.keys(), QList<int>{102});
}

void TestChannelRow::gainAndOffsetAreSentAsTyped_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("command");
    QTest::newRow("gain") << int(GainColumn) << QStringLiteral("2.50")
                          << QStringLiteral("CALC:SCAL:GAIN 2.50,(@101)");
    QTest::newRow("offset") << int(OffsetColumn) << QStringLiteral("-1e-3")
                            << QStringLiteral("CALC:SCAL:OFFS -1e-3,(@101)");
}

void TestChannelRow::gainAndOffsetAreSentAsTyped()
{
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QString, command);
    OneModule bench(kTwoChannels);
    bench.enter(101, ChannelColumn(column), text);
    QCOMPARE(bench.takeLines(), QStringList(command) + closing(101));
    // The instrument has kept its own value.
    QCOMPARE(bench.edit(101, ChannelColumn(column))->text(),
             column == GainColumn ? QStringLiteral("1") : QStringLiteral("0"));
}

void TestChannelRow::otherTextsAreRefused_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    for (const int column : {int(GainColumn), int(OffsetColumn)}) {
        QTest::addRow("letters in column %d", column)
            << column << QStringLiteral("abc") << QStringLiteral("非法字符请重新输入");
        QTest::addRow("nothing in column %d", column) << column << QString() << QString();
    }
}

void TestChannelRow::otherTextsAreRefused()
{
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QString, message);
    OneModule bench(kTwoChannels);
    bench.window().show();
    bench.enter(101, ChannelColumn(column), text);
    QCOMPARE(bench.takeLines(), QStringList());
    QCOMPARE(bench.edit(101, ChannelColumn(column))->text(), text);
    QVERIFY(bench.message().contains(message));
    QCOMPARE(bench.message().isEmpty(), message.isEmpty());
    if (!message.isEmpty()) {
        QCOMPARE(bench.messageDialog()->windowTitle(), QStringLiteral("错误"));
        QCOMPARE(bench.messageDialog()->findChild<QTimer*>()->interval(), 3000);
    }
}

void TestChannelRow::fourWireGainAndOffsetAreMirrored()
{
    OneModule bench(kAllFunctions);
    bench.makeFourWire(101, 109, "四线ohm", "FRES");
    bench.enter(101, GainColumn, QStringLiteral("2.50"));
    QCOMPARE(bench.edit(109, GainColumn)->text(), QStringLiteral("2.50"));
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:GAIN 2.50,(@101)"}) + fourWireClosing(101));
    bench.enter(101, OffsetColumn, QStringLiteral("3"));
    QCOMPARE(bench.edit(109, OffsetColumn)->text(), QStringLiteral("3"));
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:OFFS 3,(@101)"}) + fourWireClosing(101));
}

void TestChannelRow::unitIsSentInTheInstrumentsSpelling_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<QString>("command");
    QTest::newRow("plain") << QStringLiteral("dBm")
                           << QStringLiteral("CALC:SCAL:UNIT \"dBm\",(@101)");
    QTest::newRow("Celsius") << QStringLiteral("°C")
                             << QStringLiteral("CALC:SCAL:UNIT \"#C\",(@101)");
    QTest::newRow("Fahrenheit") << QStringLiteral("°F")
                                << QStringLiteral("CALC:SCAL:UNIT \"#F\",(@101)");
    QTest::newRow("none") << QStringLiteral("无") << QStringLiteral("CALC:SCAL:UNIT \"\",(@101)");
}

void TestChannelRow::unitIsSentInTheInstrumentsSpelling()
{
    QFETCH(QString, unit);
    QFETCH(QString, command);
    OneModule bench(kTwoChannels);
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT? (@101)"), QStringLiteral("\"W\""));
    bench.readBack(101);
    bench.takeLines();
    QTest::ignoreMessage(QtDebugMsg,
                         qPrintable(QStringLiteral("onUnitChanged -0000- \"%1\"").arg(unit)));
    bench.select(101, UnitColumn, unit.toUtf8().constData());
    QCOMPARE(bench.takeLines(), QStringList(command) + closing(101));
}

void TestChannelRow::unitGoesIntoTheScanList()
{
    OneModule bench(kTwoChannels);
    bench.tick(101);
    WorkspaceSpy workspace(bench);
    bench.select(101, UnitColumn, "dB");
    QCOMPARE(g_scanChannels.value(101), QStringLiteral("Vdc"));
    QVERIFY(workspace.takeTold());
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT? (@101)"), QStringLiteral("1"));
    bench.readBack(101);
    bench.select(101, UnitColumn, "dB");
    QCOMPARE(g_scanChannels.value(101), QStringLiteral("dB"));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT? (@101)"), QStringLiteral("\"dB\""));
    bench.readBack(101);
    bench.select(101, UnitColumn, "无");
    QCOMPARE(g_scanChannels.value(101), QStringLiteral(" "));
}

void TestChannelRow::fourWireUnitGoesToThePartnerFirst()
{
    OneModule bench(kAllFunctions);
    bench.makeFourWire(101, 109, "四线ohm", "FRES");
    bench.select(101, UnitColumn, "W");
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:UNIT \"W\",(@109)"}) + fourWireClosing(109) +
                                    texts({"CALC:SCAL:UNIT \"W\",(@101)"}) + fourWireClosing(101));
}

void TestChannelRow::nameIsOnlyLogged()
{
    OneModule bench(kTwoChannels);
    QTest::ignoreMessage(QtDebugMsg, "onTitleEdited -0000- \"Boiler\"");
    bench.enter(101, NameColumn, QStringLiteral("Boiler"));
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestChannelRow::panelOpensBesideItsButton_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("function") << int(MoreColumn);
    QTest::newRow("scaling") << int(ScaleMoreColumn);
}

void TestChannelRow::panelOpensBesideItsButton()
{
    QFETCH(int, column);
    OneModule bench(kTwoChannels);
    bench.window().show();
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC? (@101)"), QStringLiteral("PCT"));
    bench.select(101, ScaleFunctionColumn, "PCT");
    bench.takeLines();
    auto* button = bench.cell<QPushButton>(101, ChannelColumn(column));
    // There is room for a panel on the right of the screen.
    bench.window().move(QPoint(20, 20) - button->mapTo(&bench.window(), QPoint(0, 0)));
    AdvancedSetting* panel = bench.openPanel(101, ChannelColumn(column));
    QVERIFY(panel);
    QCOMPARE(panel->pos(), button->mapToGlobal(QPoint(button->width(), 0)));
    QVERIFY(panel->hasFocus() || panel->isAncestorOf(QApplication::focusWidget()) ||
            QApplication::focusWidget() == panel->focusProxy());
    // The button of an open panel does nothing.
    panel->move(0, 0);
    button->click();
    QCOMPARE(panel->pos(), QPoint(0, 0));
    QCOMPARE(bench.takeLines(), QStringList());
}

void TestChannelRow::changeInThePanelReadsTheChannelBack()
{
    OneModule bench(kTwoChannels);
    AdvancedSetting* panel = bench.openPanel(101, MoreColumn);
    QVERIFY(panel);
    for (QComboBox* list : panel->findChildren<QComboBox*>()) {
        if (list->isVisible() && list->findText(QStringLiteral("100")) >= 0) {
            list->setCurrentIndex(list->findText(QStringLiteral("100")));
        }
    }
    QCOMPARE(bench.takeLines(), texts({"VOLT:NPLC 100,(@101)"}) + voltageReadBack(101));
    panel->close();

    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC? (@101)"), QStringLiteral("PCT"));
    bench.select(101, ScaleFunctionColumn, "PCT");
    bench.takeLines();
    panel = bench.openPanel(101, ScaleMoreColumn);
    QVERIFY(panel);
    for (auto* spin : panel->findChildren<QDoubleSpinBox*>()) {
        if (spin->isVisible()) {
            spin->setValue(4.5);
        }
    }
    QCOMPARE(bench.takeLines(), texts({"CALC:SCAL:REF 4.5,(@101)"}) + voltageReadBack(101));
}

void TestChannelRow::numberSendsNothing()
{
    OneModule bench(kTwoChannels);
    bench.cell<QPushButton>(102, NumberColumn)->click();
    QCOMPARE(bench.cell<QPushButton>(102, NumberColumn)->text(), QStringLiteral("102"));
    QCOMPARE(bench.takeLines(), QStringList());
}

SCN_TEST(TestChannelRow, QApplication)
#include "test_channelrow.moc"
