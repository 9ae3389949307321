#include "acquisition/readdata.h"
#include "app/mainwidget.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "widgets/imagebutton.h"

#include <QApplication>
#include <QDate>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>

namespace {

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");

/// What the program sends from its start until it is idle, with an 8-channel current module in slot
/// 1 and an 8-channel voltage module in slot 2. "SYST:DATE" and "SYST:TIME" carry the time of the
/// start.
const char* const kStartUp[] = {
    "*CLS",
    "*IDN?",
    "SYST:CTYP? 1",
    "FUNC? (@101)",
    "FUNC? (@102)",
    "FUNC? (@103)",
    "FUNC? (@104)",
    "FUNC? (@105)",
    "FUNC? (@106)",
    "FUNC? (@107)",
    "FUNC? (@108)",
    "SYST:CTYP? 2",
    "FUNC? (@201)",
    "FUNC? (@202)",
    "FUNC? (@203)",
    "FUNC? (@204)",
    "FUNC? (@205)",
    "FUNC? (@206)",
    "FUNC? (@207)",
    "FUNC? (@208)",
    "SYST:CTYP? 3",
    "SYST:CTYP? 4",
    "SYST:CTYP? 5",
    "SYST:CTYP? 6",
    "SYST:CTYP? 7",
    "SYST:CTYP? 8",
    "SYST:CTYP? 9",
    "SYST:CTYP? 10",
    "SYST:CTYP? 11",
    "SYST:CTYP? 12",
    "SYST:CTYP? 13",
    "SYST:CTYP? 14",
    "SYST:CTYP? 15",
    "STAT:OPER:EVEN?",
    "ROUT:SCAN?",
    "ROUT:CHAN:LAB? (@101)",
    "FUNC? (@101)",
    "CURR:DC:RANG:AUTO? (@101)",
    "ROUT:CHAN:DEL:AUTO? (@101)",
    "CURR:DC:NPLC? (@101)",
    "CALC:SCAL:GAIN? (@101)",
    "CALC:SCAL:OFFS? (@101)",
    "CALC:SCAL:STAT? (@101)",
    "CALC:SCAL:UNIT? (@101)",
    "CALC:SCAL:FUNC? (@101)",
    "CALC:SCAL:REF:AUTO? (@101)",
    "CALC:SCAL:REF? (@101)",
    "CALC:SCAL:DBM:REF? (@101)",
    "CALC:SCAL:DB:REF? (@101)",
    "ROUT:CHAN:LAB? (@102)",
    "FUNC? (@102)",
    "CURR:DC:RANG:AUTO? (@102)",
    "ROUT:CHAN:DEL:AUTO? (@102)",
    "CURR:DC:NPLC? (@102)",
    "CALC:SCAL:GAIN? (@102)",
    "CALC:SCAL:OFFS? (@102)",
    "CALC:SCAL:STAT? (@102)",
    "CALC:SCAL:UNIT? (@102)",
    "CALC:SCAL:FUNC? (@102)",
    "CALC:SCAL:REF:AUTO? (@102)",
    "CALC:SCAL:REF? (@102)",
    "CALC:SCAL:DBM:REF? (@102)",
    "CALC:SCAL:DB:REF? (@102)",
    "ROUT:CHAN:LAB? (@103)",
    "FUNC? (@103)",
    "CURR:DC:RANG:AUTO? (@103)",
    "ROUT:CHAN:DEL:AUTO? (@103)",
    "CURR:DC:NPLC? (@103)",
    "CALC:SCAL:GAIN? (@103)",
    "CALC:SCAL:OFFS? (@103)",
    "CALC:SCAL:STAT? (@103)",
    "CALC:SCAL:UNIT? (@103)",
    "CALC:SCAL:FUNC? (@103)",
    "CALC:SCAL:REF:AUTO? (@103)",
    "CALC:SCAL:REF? (@103)",
    "CALC:SCAL:DBM:REF? (@103)",
    "CALC:SCAL:DB:REF? (@103)",
    "ROUT:CHAN:LAB? (@104)",
    "FUNC? (@104)",
    "CURR:DC:RANG:AUTO? (@104)",
    "ROUT:CHAN:DEL:AUTO? (@104)",
    "CURR:DC:NPLC? (@104)",
    "CALC:SCAL:GAIN? (@104)",
    "CALC:SCAL:OFFS? (@104)",
    "CALC:SCAL:STAT? (@104)",
    "CALC:SCAL:UNIT? (@104)",
    "CALC:SCAL:FUNC? (@104)",
    "CALC:SCAL:REF:AUTO? (@104)",
    "CALC:SCAL:REF? (@104)",
    "CALC:SCAL:DBM:REF? (@104)",
    "CALC:SCAL:DB:REF? (@104)",
    "ROUT:CHAN:LAB? (@105)",
    "FUNC? (@105)",
    "CURR:DC:RANG:AUTO? (@105)",
    "ROUT:CHAN:DEL:AUTO? (@105)",
    "CURR:DC:NPLC? (@105)",
    "CALC:SCAL:GAIN? (@105)",
    "CALC:SCAL:OFFS? (@105)",
    "CALC:SCAL:STAT? (@105)",
    "CALC:SCAL:UNIT? (@105)",
    "CALC:SCAL:FUNC? (@105)",
    "CALC:SCAL:REF:AUTO? (@105)",
    "CALC:SCAL:REF? (@105)",
    "CALC:SCAL:DBM:REF? (@105)",
    "CALC:SCAL:DB:REF? (@105)",
    "ROUT:CHAN:LAB? (@106)",
    "FUNC? (@106)",
    "CURR:DC:RANG:AUTO? (@106)",
    "ROUT:CHAN:DEL:AUTO? (@106)",
    "CURR:DC:NPLC? (@106)",
    "CALC:SCAL:GAIN? (@106)",
    "CALC:SCAL:OFFS? (@106)",
    "CALC:SCAL:STAT? (@106)",
    "CALC:SCAL:UNIT? (@106)",
    "CALC:SCAL:FUNC? (@106)",
    "CALC:SCAL:REF:AUTO? (@106)",
    "CALC:SCAL:REF? (@106)",
    "CALC:SCAL:DBM:REF? (@106)",
    "CALC:SCAL:DB:REF? (@106)",
    "ROUT:CHAN:LAB? (@107)",
    "FUNC? (@107)",
    "CURR:DC:RANG:AUTO? (@107)",
    "ROUT:CHAN:DEL:AUTO? (@107)",
    "CURR:DC:NPLC? (@107)",
    "CALC:SCAL:GAIN? (@107)",
    "CALC:SCAL:OFFS? (@107)",
    "CALC:SCAL:STAT? (@107)",
    "CALC:SCAL:UNIT? (@107)",
    "CALC:SCAL:FUNC? (@107)",
    "CALC:SCAL:REF:AUTO? (@107)",
    "CALC:SCAL:REF? (@107)",
    "CALC:SCAL:DBM:REF? (@107)",
    "CALC:SCAL:DB:REF? (@107)",
    "ROUT:CHAN:LAB? (@108)",
    "FUNC? (@108)",
    "CURR:DC:RANG:AUTO? (@108)",
    "ROUT:CHAN:DEL:AUTO? (@108)",
    "CURR:DC:NPLC? (@108)",
    "CALC:SCAL:GAIN? (@108)",
    "CALC:SCAL:OFFS? (@108)",
    "CALC:SCAL:STAT? (@108)",
    "CALC:SCAL:UNIT? (@108)",
    "CALC:SCAL:FUNC? (@108)",
    "CALC:SCAL:REF:AUTO? (@108)",
    "CALC:SCAL:REF? (@108)",
    "CALC:SCAL:DBM:REF? (@108)",
    "CALC:SCAL:DB:REF? (@108)",
    "ROUT:CHAN:LAB? (@201)",
    "FUNC? (@201)",
    "VOLT:DC:RANG:AUTO? (@201)",
    "ROUT:CHAN:DEL:AUTO? (@201)",
    "VOLT:DC:NPLC? (@201)",
    "INP:IMP:AUTO? (@201)",
    "VOLT:REF? (@201)",
    "CALC:SCAL:GAIN? (@201)",
    "CALC:SCAL:OFFS? (@201)",
    "CALC:SCAL:STAT? (@201)",
    "CALC:SCAL:UNIT? (@201)",
    "CALC:SCAL:FUNC? (@201)",
    "CALC:SCAL:REF:AUTO? (@201)",
    "CALC:SCAL:REF? (@201)",
    "CALC:SCAL:DBM:REF? (@201)",
    "CALC:SCAL:DB:REF? (@201)",
    "ROUT:CHAN:LAB? (@202)",
    "FUNC? (@202)",
    "VOLT:DC:RANG:AUTO? (@202)",
    "ROUT:CHAN:DEL:AUTO? (@202)",
    "VOLT:DC:NPLC? (@202)",
    "INP:IMP:AUTO? (@202)",
    "VOLT:REF? (@202)",
    "CALC:SCAL:GAIN? (@202)",
    "CALC:SCAL:OFFS? (@202)",
    "CALC:SCAL:STAT? (@202)",
    "CALC:SCAL:UNIT? (@202)",
    "CALC:SCAL:FUNC? (@202)",
    "CALC:SCAL:REF:AUTO? (@202)",
    "CALC:SCAL:REF? (@202)",
    "CALC:SCAL:DBM:REF? (@202)",
    "CALC:SCAL:DB:REF? (@202)",
    "ROUT:CHAN:LAB? (@203)",
    "FUNC? (@203)",
    "VOLT:DC:RANG:AUTO? (@203)",
    "ROUT:CHAN:DEL:AUTO? (@203)",
    "VOLT:DC:NPLC? (@203)",
    "INP:IMP:AUTO? (@203)",
    "VOLT:REF? (@203)",
    "CALC:SCAL:GAIN? (@203)",
    "CALC:SCAL:OFFS? (@203)",
    "CALC:SCAL:STAT? (@203)",
    "CALC:SCAL:UNIT? (@203)",
    "CALC:SCAL:FUNC? (@203)",
    "CALC:SCAL:REF:AUTO? (@203)",
    "CALC:SCAL:REF? (@203)",
    "CALC:SCAL:DBM:REF? (@203)",
    "CALC:SCAL:DB:REF? (@203)",
    "ROUT:CHAN:LAB? (@204)",
    "FUNC? (@204)",
    "VOLT:DC:RANG:AUTO? (@204)",
    "ROUT:CHAN:DEL:AUTO? (@204)",
    "VOLT:DC:NPLC? (@204)",
    "INP:IMP:AUTO? (@204)",
    "VOLT:REF? (@204)",
    "CALC:SCAL:GAIN? (@204)",
    "CALC:SCAL:OFFS? (@204)",
    "CALC:SCAL:STAT? (@204)",
    "CALC:SCAL:UNIT? (@204)",
    "CALC:SCAL:FUNC? (@204)",
    "CALC:SCAL:REF:AUTO? (@204)",
    "CALC:SCAL:REF? (@204)",
    "CALC:SCAL:DBM:REF? (@204)",
    "CALC:SCAL:DB:REF? (@204)",
    "ROUT:CHAN:LAB? (@205)",
    "FUNC? (@205)",
    "VOLT:DC:RANG:AUTO? (@205)",
    "ROUT:CHAN:DEL:AUTO? (@205)",
    "VOLT:DC:NPLC? (@205)",
    "INP:IMP:AUTO? (@205)",
    "VOLT:REF? (@205)",
    "CALC:SCAL:GAIN? (@205)",
    "CALC:SCAL:OFFS? (@205)",
    "CALC:SCAL:STAT? (@205)",
    "CALC:SCAL:UNIT? (@205)",
    "CALC:SCAL:FUNC? (@205)",
    "CALC:SCAL:REF:AUTO? (@205)",
    "CALC:SCAL:REF? (@205)",
    "CALC:SCAL:DBM:REF? (@205)",
    "CALC:SCAL:DB:REF? (@205)",
    "ROUT:CHAN:LAB? (@206)",
    "FUNC? (@206)",
    "VOLT:DC:RANG:AUTO? (@206)",
    "ROUT:CHAN:DEL:AUTO? (@206)",
    "VOLT:DC:NPLC? (@206)",
    "INP:IMP:AUTO? (@206)",
    "VOLT:REF? (@206)",
    "CALC:SCAL:GAIN? (@206)",
    "CALC:SCAL:OFFS? (@206)",
    "CALC:SCAL:STAT? (@206)",
    "CALC:SCAL:UNIT? (@206)",
    "CALC:SCAL:FUNC? (@206)",
    "CALC:SCAL:REF:AUTO? (@206)",
    "CALC:SCAL:REF? (@206)",
    "CALC:SCAL:DBM:REF? (@206)",
    "CALC:SCAL:DB:REF? (@206)",
    "ROUT:CHAN:LAB? (@207)",
    "FUNC? (@207)",
    "VOLT:DC:RANG:AUTO? (@207)",
    "ROUT:CHAN:DEL:AUTO? (@207)",
    "VOLT:DC:NPLC? (@207)",
    "INP:IMP:AUTO? (@207)",
    "VOLT:REF? (@207)",
    "CALC:SCAL:GAIN? (@207)",
    "CALC:SCAL:OFFS? (@207)",
    "CALC:SCAL:STAT? (@207)",
    "CALC:SCAL:UNIT? (@207)",
    "CALC:SCAL:FUNC? (@207)",
    "CALC:SCAL:REF:AUTO? (@207)",
    "CALC:SCAL:REF? (@207)",
    "CALC:SCAL:DBM:REF? (@207)",
    "CALC:SCAL:DB:REF? (@207)",
    "ROUT:CHAN:LAB? (@208)",
    "FUNC? (@208)",
    "VOLT:DC:RANG:AUTO? (@208)",
    "ROUT:CHAN:DEL:AUTO? (@208)",
    "VOLT:DC:NPLC? (@208)",
    "INP:IMP:AUTO? (@208)",
    "VOLT:REF? (@208)",
    "CALC:SCAL:GAIN? (@208)",
    "CALC:SCAL:OFFS? (@208)",
    "CALC:SCAL:STAT? (@208)",
    "CALC:SCAL:UNIT? (@208)",
    "CALC:SCAL:FUNC? (@208)",
    "CALC:SCAL:REF:AUTO? (@208)",
    "CALC:SCAL:REF? (@208)",
    "CALC:SCAL:DBM:REF? (@208)",
    "CALC:SCAL:DB:REF? (@208)",
    "TRIG:SOUR?",
    "TRIG:COUN?",
    "MMEM:LOG:ENAB?",
    "MMEM:FORM:READ:RLIM?",
    "MMEM:FORM:READ:RLIM:COUN?",
    "ROUT:MON:STAT?",
    "STAT:OPER:COND?",
    "SYST:DATE",
    "SYST:TIME",
    "SYST:PERS:MOD:DEF?",
    "SYST:PERS:MOD?",
    "MEM:STAT:NAME? 1",
    "MEM:STAT:VAL? 1",
    "MEM:STAT:NAME? 2",
    "MEM:STAT:VAL? 2",
    "MEM:STAT:NAME? 3",
    "MEM:STAT:VAL? 3",
    "MEM:STAT:NAME? 4",
    "MEM:STAT:VAL? 4",
    "MEM:STAT:NAME? 5",
    "MEM:STAT:VAL? 5",
};

/// Ticking channel 102, then channel 103.
const char* const kTick[] = {
    "ROUT:SCAN (@102)",
    "SYST:ERR?",
    "ROUT:SCAN (@102,103)",
    "SYST:ERR?",
};

/// The click on start, up to the first poll of the run.
const char* const kStart[] = {
    "*IDN?",
    "MMEM:LOG:ENAB?",
    "INIT",
    "FORM:READ:ALAR ON",
    "FORM:READ:CHAN ON",
    "FORM:READ:TIME ON",
    "FORM:READ:TIME:TYPE ABS",
    "FORM:READ:UNIT ON",
    "SYST:ERR?",
    "ROUT:SCAN?",
    "SYST:TIME:SCAN?",
    "SYST:TIME:SCAN?",
};

/// One pass that finds readings. "R?" carries the count returned by "DATA:POIN?".
const char* const kPass[] = {
    "DATA:POIN?",
    "R? ",
    "STAT:OPER:COND?",
    "STAT:OPER:EVEN?",
};

/// The click on stop, and the pass that finds the instrument idle and drained.
const char* const kStop[] = {
    "ABOR",
};
const char* const kLastPass[] = {
    "DATA:POIN?",
    "STAT:OPER:COND?",
    "STAT:OPER:EVEN?",
};

template <int Count>
QStringList listOf(const char* const (&lines)[Count])
{
    QStringList list;
    for (const char* line : lines) {
        list.append(QString::fromLatin1(line));
    }
    return list;
}

/// Removes what varies from run to run.
QStringList withoutTimes(QStringList lines)
{
    for (QString& line : lines) {
        for (const char* head : {"SYST:DATE", "SYST:TIME"}) {
            const QString command = QString::fromLatin1(head) + QLatin1Char(' ');
            if (line.startsWith(command)) {
                line = QString::fromLatin1(head);
            }
        }
    }
    return lines;
}

QStringList withoutPolls(QStringList lines)
{
    lines.removeAll(kPoll);
    return lines;
}

/// The lines of the start-up, and polls after them.
void checkStartUp(const SimulatedInstrument& instrument)
{
    // The acquisition thread starts polling in its second second.
    const QStringList startUp = listOf(kStartUp);
    const QStringList seen = instrument.received();
    QCOMPARE(withoutTimes(seen).mid(0, startUp.size()), startUp);
    const QString date = seen.at(startUp.indexOf(QStringLiteral("SYST:DATE")));
    QVERIFY2(QRegExp(QStringLiteral("SYST:DATE \\d{4},\\d\\d,\\d\\d")).exactMatch(date),
             qPrintable(date));
    const QString time = seen.at(startUp.indexOf(QStringLiteral("SYST:TIME")));
    QVERIFY2(QRegExp(QStringLiteral("SYST:TIME \\d\\d,\\d\\d,\\d\\d\\.\\d{3}")).exactMatch(time),
             qPrintable(time));
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().size() >= startUp.size() + 2, 10000);
    QCOMPARE(instrument.received().mid(startUp.size(), 2), (QStringList{kPoll, kPoll}));
}

/// A pass with readings, among the lines from `mark` on.
void checkPass(const SimulatedInstrument& instrument, int mark)
{
    QTRY_VERIFY_WITH_TIMEOUT(
        !instrument.received().mid(mark).filter(QStringLiteral("R? ")).isEmpty(), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().constLast() == kPoll, 5000);
    const QStringList seen = instrument.received().mid(mark);
    const int fetch = seen.indexOf(QRegExp(QStringLiteral("R\\? \\d+")));
    QStringList pass = seen.mid(fetch - 1, 4);
    pass[1] = QStringLiteral("R? ");
    QCOMPARE(pass, listOf(kPass));
}

/// The stop, and the drain after it.
void checkStop(const SimulatedInstrument& instrument, QWidget* startButton)
{
    const int mark = instrument.received().size();
    QTest::mouseClick(startButton, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!g_scanRunning, 10000);
    QStringList seen = instrument.received().mid(mark);
    QCOMPARE(seen.count(QStringLiteral("ABOR")), 1);
    QCOMPARE(seen.mid(0, 1), listOf(kStop));
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().constLast() == kPoll, 5000);
    seen = instrument.received().mid(mark);
    const int last = seen.lastIndexOf(QStringLiteral("DATA:POIN?"));
    QCOMPARE(seen.mid(last, 3), listOf(kLastPass));
    QTest::qWait(1500);
    QVERIFY(!instrument.received().mid(mark + last + 1).contains(QStringLiteral("DATA:POIN?")));
}

} // namespace

/// The wire as literal lists. The window runs in this process and the simulator in its own, so that
/// the two cannot share a misreading.
class TestWire : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void lines_data();
    void lines();

private:
    QTreeWidgetItem* item(MainWidget& window, int slot, int row) const;
    void clickCheckBox(QTreeWidgetItem* item) const;
};

void TestWire::initTestCase()
{
    initResources();
    qRegisterMetaType<QList<MeasurementData>>("QList<MeasurementData>");
}

void TestWire::cleanupTestCase()
{
    CurveDataDB::shutdown();
}

QTreeWidgetItem* TestWire::item(MainWidget& window, int slot, int row) const
{
    auto* tree = window.findChild<QTreeWidget*>();
    return tree->topLevelItem(slot - 1)->child(row);
}

/// Clicks where the box is drawn.
void TestWire::clickCheckBox(QTreeWidgetItem* item) const
{
    QTreeWidget* tree = item->treeWidget();
    QStyleOptionViewItem option;
    option.initFrom(tree);
    option.rect = tree->visualItemRect(item);
    option.rect.setWidth(tree->columnWidth(0) - option.rect.x());
    option.features = QStyleOptionViewItem::HasCheckIndicator;
    const QRect box =
        tree->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, tree);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, box.center());
}

void TestWire::lines_data()
{
    QTest::addColumn<int>("transport");
    QTest::newRow("TCP") << static_cast<int>(SimulatedInstrument::Transport::Tcp);
    QTest::newRow("pseudo-terminal")
        << static_cast<int>(SimulatedInstrument::Transport::PseudoTerminal);
}

void TestWire::lines()
{
    QFETCH(int, transport);
    // A separate serial number gives each transport its own data directory.
    const QString identity = QStringLiteral("SCN,SCN4070A,WIRE%1,1").arg(transport);
    const SimulatedInstrument instrument(static_cast<SimulatedInstrument::Transport>(transport),
                                         {QStringLiteral("--slots"), QStringLiteral("1:14,2:15"),
                                          QStringLiteral("--rate"), QStringLiteral("20")});
    QVERIFY(!instrument.resource().isEmpty());
    g_resourceName = instrument.resource();

    MainWidget window(nullptr);
    QVERIFY(g_instrumentConnected);
    window.resize(1400, 900);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));

    checkStartUp(instrument);

    // One tick, and another. A poll may fall between any two lines.
    int mark = instrument.received().size();
    clickCheckBox(item(window, 1, 1));
    clickCheckBox(item(window, 1, 2));
    QCOMPARE(withoutPolls(instrument.received().mid(mark)), listOf(kTick));
    QCOMPARE(g_scanChannels.keys(), (QList<int>{102, 103}));

    // The start: two clicks, one start.
    auto* startButton = window.findChildren<ImageButton*>().constFirst();
    mark = instrument.received().size();
    QTest::mouseClick(startButton, Qt::LeftButton);
    QTest::mouseClick(startButton, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, 20000);
    QCOMPARE(withoutPolls(instrument.received().mid(mark)).mid(0, listOf(kStart).size()),
             listOf(kStart));

    checkPass(instrument, mark);
    checkStop(instrument, startButton);
}

SCN_TEST(TestWire, QApplication)
#include "test_wire.moc"
