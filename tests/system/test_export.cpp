#include "support/exportedfile.h"
#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

namespace {

constexpr int kEndWaitMs = 20000;
const QString kSerial = QStringLiteral("EXP/0001");
const QString kExportName = QStringLiteral("EXP_0001_Trace_1_*.csv");

/// The time after the comma of the header line with this label, in ms since the epoch.
qint64 momentIn(const QString& line, const QString& label)
{
    if (line.section(QLatin1Char(','), 0, 0) != label) {
        return -1;
    }
    return QDateTime::fromString(line.section(QLatin1Char(','), 1),
                                 QStringLiteral("yyyy MM dd hh mm ss"))
        .toMSecsSinceEpoch();
}

/// What scn4070a-store writes for the run in a program's folder, of which this is the program's own file.
QByteArray exportedByTool(const QString& folder, const QStringList& lines)
{
    const auto field = [&lines](int line) { return lines.at(line).section(QLatin1Char(','), 1); };
    QProcess tool;
    tool.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-store"),
               {QStringLiteral("export"), QDir(folder).filePath(QStringLiteral("EXP_0001_Data")),
                QStringLiteral("--address"), field(0), QStringLiteral("--serial"), field(2),
                QStringLiteral("--from"), field(3), QStringLiteral("--to"), field(4)});
    return tool.waitForFinished(kEndWaitMs) && tool.exitCode() == 0 ? tool.readAllStandardOutput()
                                                                    : tool.readAllStandardError();
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Multiplies each reading of the first channel in a directory's store into a thousand million, so
/// that no export can finish.
void repeatReadings(const QString& directory)
{
    const QString stores = QDir(directory).filePath(
        QDir(directory).entryList({QStringLiteral("*_Data")}, QDir::Dirs).value(0));
    const QStringList names = QDir(stores).entryList({QStringLiteral("*.db")}, QDir::Files);
    QVERIFY(!names.isEmpty());
    for (const QString& name : names) {
        const QString file = QDir(stores).filePath(name);
        const QStringList tables = runSqlite(
            file, QStringLiteral("SELECT table_name FROM batch_metadata WHERE curve_id = 1"));
        QVERIFY(!tables.isEmpty());
        runSqlite(file,
                  QStringLiteral("CREATE TABLE thousand AS WITH RECURSIVE n(i) AS (SELECT 1 UNION "
                                 "ALL SELECT i + 1 FROM n LIMIT 1000) SELECT i FROM n"));
        for (const QString& table : tables) {
            runSqlite(file,
                      QStringLiteral("ALTER TABLE \"%1\" RENAME TO \"once_%1\"; CREATE VIEW "
                                     "\"%1\" AS SELECT o.curve_id, o.timestamp, o.value FROM "
                                     "\"once_%1\" o CROSS JOIN thousand a CROSS JOIN thousand b "
                                     "CROSS JOIN thousand c")
                          .arg(table));
        }
    }
}

} // namespace

/// A scan and its export with real clicks, and the resulting file.
class TestExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void fileHoldsWhatTheInstrumentSent();
    void exitWithTheDialogOpenLeavesNothing();
    void endInAnExportLeavesNothing_data();
    void endInAnExportLeavesNothing();

private:
    static QStringList arguments();

    VirtualDisplay m_display;
};

void TestExport::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

QStringList TestExport::arguments()
{
    return {QStringLiteral("--slots"), QStringLiteral("1:15"),
            QStringLiteral("--rate"),  QStringLiteral("40"),
            QStringLiteral("--idn"),   QStringLiteral("SCN,SCN4070A,%1,1").arg(kSerial)};
}

void TestExport::fileHoldsWhatTheInstrumentSent()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, arguments());
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kEndWaitMs);
    // The drain: a pass that finds no readings and an idle instrument.
    QTRY_VERIFY_WITH_TIMEOUT(instrument.sent().count(QStringLiteral("+256")) >= 2, kEndWaitMs);
    QVERIFY(ProgramUser::waitForPolls(instrument, 1));

    QVERIFY(user.openExportDialog());
    user.clickExportToFile();
    const QDir directory(program.directory());
    QTRY_COMPARE_WITH_TIMEOUT(directory.entryList({kExportName}).size(), 1, kEndWaitMs);
    const QString path = directory.filePath(directory.entryList({kExportName}).constFirst());
    // Complete: the last row is there and whole.
    const Readings sent = readingsInReplies(instrument.sent());
    QCOMPARE(sent.keys(), (QList<int>{101, 102, 103, 104}));
    QTRY_VERIFY_WITH_TIMEOUT(exportedLines(path).size() > 5, kEndWaitMs);
    const qint64 start = momentIn(exportedLines(path).at(3), QStringLiteral("开始时间"));
    const qint64 end = momentIn(exportedLines(path).at(4), QStringLiteral("结束时间"));
    QVERIFY(start > 0 && end > start);
    const QStringList expected = exportedRows(sent, start, end);
    QVERIFY(!expected.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(exportedLines(path).size(), 6 + expected.size(), kEndWaitMs);

    const QStringList lines = exportedLines(path);
    QCOMPARE(lines.at(0), QStringLiteral("地址,") + instrument.resource());
    QCOMPARE(lines.at(1), QStringLiteral("型号,SCN4070A"));
    QCOMPARE(lines.at(2), QStringLiteral("序列号：,") + kSerial);
    QStringList titles{QStringLiteral("编号"), QStringLiteral("时间")};
    for (const int channel : sent.keys()) {
        titles.append(QStringLiteral("%1(Vdc)").arg(channel));
    }
    QCOMPARE(lines.at(5), titles.join(QLatin1Char(',')) + QLatin1Char(','));
    QCOMPARE(lines.mid(6), expected);
    // While the program has the files open, and after it.
    QCOMPARE(exportedByTool(program.directory(), lines), bytesOf(path));

    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    QCOMPARE(exportedLines(path), lines);
    QCOMPARE(exportedByTool(program.directory(), lines), bytesOf(path));
}

void TestExport::exitWithTheDialogOpenLeavesNothing()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, arguments());
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.openExportDialog());
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(QDir(program.directory()).entryList({QStringLiteral("*.csv")}), QStringList());
}

void TestExport::endInAnExportLeavesNothing_data()
{
    QTest::addColumn<bool>("byLauncher");
    QTest::newRow("exit") << true;
    QTest::newRow("closed window") << false;
}

void TestExport::endInAnExportLeavesNothing()
{
    constexpr int kEndMs = 6000;
    QFETCH(bool, byLauncher);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, arguments());
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    QVERIFY(ProgramUser::waitForPolls(instrument, 3));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kEndWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(instrument.sent().count(QStringLiteral("+256")) >= 2, kEndWaitMs);
    QVERIFY(ProgramUser::waitForPolls(instrument, 1));
    repeatReadings(program.directory());

    const QDir directory(program.directory());
    QVERIFY(user.openExportDialog());
    user.clickExportToFile();
    QTRY_COMPARE_WITH_TIMEOUT(directory.entryList({kExportName}).size(), 1, kEndWaitMs);
    const QFileInfo part(directory.filePath(directory.entryList({kExportName}).constFirst()));
    QTRY_VERIFY_WITH_TIMEOUT((QFileInfo(part.filePath()).size() > 100000), kEndWaitMs);
    if (byLauncher) {
        program.write("exit\n");
    } else {
        QVERIFY(m_display.closeWindow(program.windowHandle()));
    }
    QVERIFY(program.waitForEnd(kEndMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    QCOMPARE(program.exitCode(), 0);
    QVERIFY2(program.log().contains(QStringLiteral("[导出线程] 收到停止信号，终止导出")),
             qPrintable(program.log()));
    QCOMPARE(directory.entryList({QStringLiteral("*.csv")}), QStringList());
}

SCN_TEST(TestExport, QCoreApplication)
#include "test_export.moc"
