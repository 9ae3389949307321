#include "app/mainwidget.h"
#include "instrument/cdevicevisa.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "windowbench.h"

#include <QCheckBox>
#include <QRegularExpression>
#include <QtTest>

#include <initializer_list>

using namespace scn;

namespace {

/// The lines of a complete read-back from STAT:OPER:EVEN? to the trigger settings.
QStringList scanListReadBack(const QList<int>& channels)
{
    QStringList lines = texts({"STAT:OPER:EVEN?", "ROUT:SCAN?"});
    for (const int channel : channels) {
        lines += voltageReadBack(channel);
    }
    return lines;
}

/// The lines before the first trigger query.
QStringList beforeTrigger(const QStringList& lines)
{
    return lines.mid(0, lines.indexOf(QStringLiteral("TRIG:SOUR?")));
}

/// The lines after the module search.
QStringList behindModules(const QStringList& lines)
{
    return lines.mid(lines.indexOf(QStringLiteral("SYST:CTYP? 15")) + 1);
}

/// A module of two channels in slot 2.
struct TwoChannels : WindowBench
{
    TwoChannels() { instrument().putModule(2, QStringLiteral("SCN4005A")); }
};

} // namespace

/// Finding the modules, and reading the instrument's state back into the window.
class TestDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void slotIsFilledByItsSecondField_data();
    void slotIsFilledByItsSecondField();
    void searchGoesThroughAllSlots();
    void modulesFunctionsAreAskedInOneGo();
    void moduleThatHasGoneStaysRegistered();
    void moduleThatCameLaterHasNoRows();

    void scanListChecksItsChannels_data();
    void scanListChecksItsChannels();
    void emptyListLeavesTheMarksAlone();
    void otherEmptyFormsClearTheMarks_data();
    void otherEmptyFormsClearTheMarks();
    void moduleWithoutChannelsIsNeverChecked();
    void recoveryReadsEverythingBack();

    void silenceReadsAsDefaults();
};

void TestDiscovery::slotIsFilledByItsSecondField_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("isFilled");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("lastChannel");
    QTest::newRow("model") << QStringLiteral("MAKER,SCN4005A,0,1.00") << true << 5 << 1;
    QTest::newRow("two characters") << QStringLiteral("MAKER,13") << true << 13 << 0;
    QTest::newRow("model without a number") << QStringLiteral("MAKER,NONE,0") << true << -1 << -1;
    QTest::newRow("one character") << QStringLiteral("MAKER,0,0,0") << false << 7 << 8;
    QTest::newRow("empty field") << QStringLiteral("MAKER,,SCN4005A") << false << 7 << 8;
    QTest::newRow("no field") << QStringLiteral("SCN4005A") << false << 7 << 8;
}

void TestDiscovery::slotIsFilledByItsSecondField()
{
    QFETCH(QString, reply);
    QFETCH(bool, isFilled);
    QFETCH(int, type);
    QFETCH(int, lastChannel);
    WindowBench bench;
    bench.instrument().setReply(QStringLiteral("SYST:CTYP? 3"), reply);
    // The registers of an empty slot stay as they were.
    slotModuleType[3] = 7;
    slotLastChannel[3] = 8;
    bench.open();
    QCOMPARE(slotPresent[3], isFilled);
    QCOMPARE(slotModuleType[3], type);
    QCOMPARE(slotLastChannel[3], lastChannel);
    QCOMPARE(bench.tree()->topLevelItemCount(), isFilled ? 1 : 0);
}

void TestDiscovery::searchGoesThroughAllSlots()
{
    WindowBench bench;
    bench.instrument().putModule(15, QStringLiteral("SCN4013A"));
    bench.open();
    QCOMPARE(bench.startUpLines().mid(0, 18),
             texts({"*CLS", "*IDN?", "SYST:CTYP? 1", "SYST:CTYP? 2", "SYST:CTYP? 3", "SYST:CTYP? 4",
                    "SYST:CTYP? 5", "SYST:CTYP? 6", "SYST:CTYP? 7", "SYST:CTYP? 8", "SYST:CTYP? 9",
                    "SYST:CTYP? 10", "SYST:CTYP? 11", "SYST:CTYP? 12", "SYST:CTYP? 13",
                    "SYST:CTYP? 14", "SYST:CTYP? 15", "FUNC? (@1501)"}));
    QVERIFY(slotPresent[15]);
    QVERIFY(bench.item(1501));
}

void TestDiscovery::modulesFunctionsAreAskedInOneGo()
{
    TwoChannels bench;
    const QSignalSpy goes(g_visa, &CDeviceVisa::commandsCompleted);
    bench.open();
    QCOMPARE(goes.size(), 1);
    QCOMPARE(goes.constFirst().constFirst().toStringList(),
             texts({"FUNC? (@201)", "FUNC? (@202)"}));
}

void TestDiscovery::moduleThatHasGoneStaysRegistered()
{
    TwoChannels bench;
    bench.open();
    bench.instrument().setReply(QStringLiteral("SYST:CTYP? 2"), QStringLiteral("MAKER,0,0,0"));
    bench.loseAndRecover();
    QVERIFY(slotPresent[2]);
    QCOMPARE(beforeTrigger(behindModules(bench.instrument().lines())),
             scanListReadBack({201, 202}));
    QCOMPARE(bench.module(2)->childCount(), 2);
}

void TestDiscovery::moduleThatCameLaterHasNoRows()
{
    TwoChannels bench;
    bench.open();
    bench.instrument().putModule(4, QStringLiteral("SCN4013A"));
    bench.loseAndRecover();
    QVERIFY(slotPresent[4]);
    QCOMPARE(bench.tree()->topLevelItemCount(), 1);
    // Without a row the read-back of the channel ends with its function.
    QCOMPARE(beforeTrigger(behindModules(bench.instrument().lines())),
             scanListReadBack({201, 202}) + texts({"ROUT:CHAN:LAB? (@401)", "FUNC? (@401)"}));
}

void TestDiscovery::scanListChecksItsChannels_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QList<int>>("channels");
    QTest::addColumn<int>("moduleState");
    QTest::newRow("one") << QStringLiteral("#16(@201)") << QList<int>{201}
                         << int(Qt::PartiallyChecked);
    QTest::newRow("all") << QStringLiteral("#210(@201,202)") << QList<int>{201, 202}
                         << int(Qt::Checked);
    QTest::newRow("entries without a row")
        << QStringLiteral("#235(@0,99,200,203,301,1601,-202,x,202)") << QList<int>{202}
        << int(Qt::PartiallyChecked);
    QTest::newRow("no ranges") << QStringLiteral("#210(@201:202)") << QList<int>()
                               << int(Qt::Unchecked);
}

void TestDiscovery::scanListChecksItsChannels()
{
    QFETCH(QString, reply);
    QFETCH(QList<int>, channels);
    QFETCH(int, moduleState);
    TwoChannels bench;
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), reply);
    bench.open();
    QCOMPARE(bench.tickedChannels(), channels);
    QCOMPARE(int(bench.module(2)->checkState(ScanColumn)), moduleState);
    QCOMPARE(g_scanChannels.keys(), channels);
    // The check marks follow the instrument; nothing is sent back.
    QCOMPARE(bench.startUpLines().filter(QStringLiteral("ROUT:SCAN")), texts({"ROUT:SCAN?"}));
}

void TestDiscovery::emptyListLeavesTheMarksAlone()
{
    TwoChannels bench;
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#16(@202)"));
    bench.open();
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#13(@)"));
    bench.loseAndRecover();
    QCOMPARE(bench.tickedChannels(), QList<int>{202});
    QCOMPARE(g_scanChannels, (QMap<int, QString>{{202, QStringLiteral("Vdc")}}));
    QCOMPARE(beforeTrigger(behindModules(bench.instrument().lines())),
             scanListReadBack({201, 202}));
}

void TestDiscovery::otherEmptyFormsClearTheMarks_data()
{
    QTest::addColumn<QString>("reply");
    QTest::newRow("without a header") << QStringLiteral("(@)");
    QTest::newRow("longer header") << QStringLiteral("#203(@)");
    QTest::newRow("no list") << QStringLiteral("#10");
    QTest::newRow("text") << QStringLiteral("none");
}

void TestDiscovery::otherEmptyFormsClearTheMarks()
{
    QFETCH(QString, reply);
    TwoChannels bench;
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#210(@201,202)"));
    bench.open();
    QCOMPARE(bench.tickedChannels(), (QList<int>{201, 202}));
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), reply);
    bench.loseAndRecover();
    QCOMPARE(bench.tickedChannels(), QList<int>());
    QCOMPARE(bench.module(2)->checkState(ScanColumn), Qt::Unchecked);
    QVERIFY(g_scanChannels.isEmpty());
}

void TestDiscovery::moduleWithoutChannelsIsNeverChecked()
{
    TwoChannels bench;
    bench.instrument().putModule(1, QStringLiteral("NONE"));
    bench.instrument().setReply(QStringLiteral("ROUT:SCAN?"), QStringLiteral("#16(@201)"));
    bench.open();
    QCOMPARE(bench.module(1)->childCount(), 0);
    QCOMPARE(bench.module(1)->checkState(ScanColumn), Qt::Unchecked);
}

void TestDiscovery::recoveryReadsEverythingBack()
{
    TwoChannels bench;
    bench.open();
    bench.loseAndRecover();
    QVERIFY(g_instrumentConnected);
    const auto untimed = [](QStringList lines) {
        lines.replaceInStrings(QRegularExpression(QStringLiteral("^(SYST:(DATE|TIME)) .*")),
                               QStringLiteral("\\1"));
        return lines;
    };
    QCOMPARE(untimed(bench.instrument().lines()), untimed(bench.startUpLines()));
}

void TestDiscovery::silenceReadsAsDefaults()
{
    TwoChannels bench;
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:STAT?"), QStringLiteral("1"));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:UNIT?"), QStringLiteral("\"W\""));
    bench.instrument().setReply(QStringLiteral("CALC:SCAL:FUNC?"), QStringLiteral("DB"));
    bench.open();
    QCOMPARE(bench.box(201, UnitColumn)->currentText(), QStringLiteral("W"));
    // If all of a channel's queries went unanswered in a row, the link would count as dead.
    const auto silenceAt = [&bench](const char* line, bool isSilent) {
        bench.instrument().whenAsked(QString::fromLatin1(line), [&bench, isSilent] {
            bench.instrument().setSilent(isSilent);
        });
    };
    silenceAt("VOLT:DC:RANG:AUTO? (@201)", true);
    silenceAt("ROUT:CHAN:DEL:AUTO? (@201)", false);
    silenceAt("INP:IMP:AUTO? (@201)", true);
    bench.readBack(201);
    QVERIFY(g_instrumentConnected);
    QCOMPARE(bench.box(201, RangeColumn)->currentIndex(), 0);
    QCOMPARE(bench.box(201, ScaleFunctionColumn)->currentIndex(), 0);
    QCOMPARE(bench.box(201, UnitColumn)->currentIndex(), 0);
    QVERIFY(!bench.cell<QCheckBox>(201, ScaleColumn)->isChecked());
    QCOMPARE(bench.edit(201, GainColumn)->text(), QStringLiteral("0"));
    QCOMPARE(bench.edit(201, OffsetColumn)->text(), QStringLiteral("0"));
    QCOMPARE(bench.message(), QString());
}

SCN_TEST(TestDiscovery, QApplication)
#include "test_discovery.moc"
