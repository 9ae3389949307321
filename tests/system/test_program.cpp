#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <ctime>

namespace {

constexpr int kEndWaitMs = 20000;

constexpr int kStartWaitMs = 60000;
constexpr int kKillsOfTheShortRun = 4;
constexpr int kExitsOfTheShortRun = 5;
constexpr int kLatestKillMs = 4000;

/// Long enough to start the program and a scan on a busy machine.
constexpr int kSecondsToMidnight = 60;

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");
const QString kSerial = QStringLiteral("PROG/0001");

/// Reads the day files left by a killed program from a copy, since opening a file would already
/// recover it. False if one is damaged.
bool readIntact(const QString& store, Readings& readings)
{
    const QTemporaryDir copies;
    for (const QString& name : QDir(store).entryList(QDir::Files)) {
        QFile::copy(QDir(store).filePath(name), copies.filePath(name));
    }
    for (const QString& name : QDir(copies.path()).entryList({QStringLiteral("*.db")})) {
        if (runSqlite(copies.filePath(name), QStringLiteral("PRAGMA integrity_check")) !=
            QStringList{QStringLiteral("ok")}) {
            return false;
        }
    }
    readings = readingsInStore(copies.path());
    return true;
}

int fetches(const SimulatedInstrument& instrument)
{
    return instrument.received().filter(QStringLiteral("R? ")).size();
}

/// Whether each channel's readings are a prefix of the other's.
bool isBeginningOf(const Readings& readings, const Readings& all)
{
    for (auto channel = readings.cbegin(); channel != readings.cend(); ++channel) {
        if (channel.value() != all.value(channel.key()).mid(0, channel->size())) {
            return false;
        }
    }
    return true;
}

/// Moves this process and its children into a zone in which midnight is soon.
class MidnightAhead
{
public:
    explicit MidnightAhead(int seconds)
        : m_previous(qgetenv("TZ"))
        , m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        constexpr int kDayS = 86400;
        const int utc = QTime(0, 0).secsTo(QDateTime::currentDateTimeUtc().time());
        // A zone is named by what must be added to its time to get UTC.
        int behindUtc = (utc - (kDayS - seconds) + 2 * kDayS) % kDayS;
        if (behindUtc > kDayS / 2) {
            behindUtc -= kDayS;
        }
        const QTime distance = QTime(0, 0).addSecs(std::abs(behindUtc));
        setZone(QByteArray(behindUtc < 0 ? "MID-" : "MID+") +
                distance.toString(QStringLiteral("hh:mm:ss")).toLatin1());
        m_before = QDate::currentDate();
    }

    ~MidnightAhead()
    {
        if (m_wasSet) {
            setZone(m_previous);
        } else {
            setZone({});
        }
    }

    MidnightAhead(const MidnightAhead&) = delete;
    MidnightAhead& operator=(const MidnightAhead&) = delete;

    /// The day that is about to end.
    QDate before() const { return m_before; }
    bool isOver() const { return QDate::currentDate() != m_before; }

private:
    static void setZone(const QByteArray& zone)
    {
        if (zone.isEmpty()) {
            qunsetenv("TZ");
        } else {
            qputenv("TZ", zone);
        }
        tzset();
    }

    QByteArray m_previous;
    bool m_wasSet;
    QDate m_before;
};

} // namespace

/// The program as its user sees it: a real window, real clicks, a real instrument on the wire, and
/// the files it leaves.
class TestProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void endingAScanLeavesEveryReading_data();
    void endingAScanLeavesEveryReading();
    void scanGoesOnOverMidnight();
    void leavingDuringAScanLeavesACleanStore();
    void killingDuringAScanLeavesAReadableStore();
    void startAfterAKillFindsTheStoreIntact();
    void storeThatCannotBeWrittenDoesNotStopTheProgram();
    void exitsWithAHangingReplyAreClean();

private:
    VirtualDisplay m_display;
};

void TestProgram::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestProgram::endingAScanLeavesEveryReading_data()
{
    QTest::addColumn<int>("transport");
    QTest::newRow("TCP") << static_cast<int>(SimulatedInstrument::Transport::Tcp);
    QTest::newRow("pseudo-terminal")
        << static_cast<int>(SimulatedInstrument::Transport::PseudoTerminal);
}

void TestProgram::endingAScanLeavesEveryReading()
{
    QFETCH(int, transport);
    const SimulatedInstrument instrument(static_cast<SimulatedInstrument::Transport>(transport),
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40"),
                                          QStringLiteral("--idn"),
                                          QStringLiteral("SCN,SCN4070A,%1,1").arg(kSerial)});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kEndWaitMs);
    // The drain: a pass that finds no readings and an idle instrument.
    QTRY_VERIFY_WITH_TIMEOUT(instrument.sent().count(QStringLiteral("+256")) >= 2, kEndWaitMs);
    QTest::qWait(1000);
    QCOMPARE(instrument.received().count(QStringLiteral("INIT")), 1);

    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    // A slash in the serial number does not lead outside the program's folder.
    const QDir store(program.directory() + QStringLiteral("/PROG_0001_Data"));
    QCOMPARE(store.entryList({QStringLiteral("*.db-wal"), QStringLiteral("*.db-shm")}),
             QStringList());
    const Readings sent = readingsInReplies(instrument.sent());
    QCOMPARE(sent.keys(), (QList<int>{101, 102, 103, 104}));
    QCOMPARE(readingsInStore(store.path()), sent);
}

void TestProgram::scanGoesOnOverMidnight()
{
    const MidnightAhead midnight(kSecondsToMidnight);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    QVERIFY2(!midnight.isOver(), "the scan began too late");
    QVERIFY(QTest::qWaitFor([&midnight] { return midnight.isOver(); }, 2000 * kSecondsToMidnight));
    QVERIFY(ProgramUser::waitForPolls(instrument, 3));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kEndWaitMs);
    // Only the status is polled: the instrument is drained.
    const auto rests = [&instrument] {
        const QStringList lines = instrument.received();
        return lines.mid(lines.size() - 3) == QStringList{kPoll, kPoll, kPoll};
    };
    QVERIFY(QTest::qWaitFor(rests, kEndWaitMs));
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));

    const QDir store(program.directory() + QStringLiteral("/MY00000042_Data"));
    const Readings sent = readingsInReplies(instrument.sent());
    QCOMPARE(readingsInStore(store.path()), sent);
    QCOMPARE(gapIn(sent, 100), QString()); // four channels at 40 readings a second
    const QStringList files = store.entryList({QStringLiteral("*.db")});
    QCOMPARE(files,
             (QStringList{midnight.before().toString(QStringLiteral("yyyyMMdd.'db'")),
                          midnight.before().addDays(1).toString(QStringLiteral("yyyyMMdd.'db'"))}));
    for (const QString& file : files) {
        const QString path = store.filePath(file);
        QCOMPARE(runSqlite(path, QStringLiteral("SELECT curve_id FROM curve_info")).size(), 4);
        const QStringList tables = runSqlite(
            path, QStringLiteral("SELECT table_name FROM batch_metadata WHERE table_name LIKE "
                                 "'%batch_%1%'")
                      .arg(file.left(8)));
        QCOMPARE(tables.size(), 4);
        for (const QString& table : tables) {
            QVERIFY(
                runSqlite(path, QStringLiteral("SELECT count(*) FROM ") + table).value(0).toInt() >
                10);
        }
    }
}

void TestProgram::leavingDuringAScanLeavesACleanStore()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    QElapsedTimer timer;
    timer.start();
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    // At most two seconds for the store, half a second for the rest, and a margin for a busy
    // machine.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    QVERIFY2(!program.log().contains(QLatin1String("QSql")), qPrintable(program.log()));

    const QDir store(program.directory() + QStringLiteral("/MY00000042_Data"));
    QCOMPARE(store.entryList(QDir::Files).size(), 1);
    const QString file = store.filePath(store.entryList(QDir::Files).constFirst());
    QCOMPARE(runSqlite(file, QStringLiteral("PRAGMA journal_mode")),
             QStringList{QStringLiteral("delete")});
    QCOMPARE(runSqlite(file, QStringLiteral("PRAGMA integrity_check")),
             QStringList{QStringLiteral("ok")});
    // Everything fetched is there.
    QCOMPARE(readingsInStore(store.path()), readingsInReplies(instrument.sent()));
    // The instrument goes on scanning; the next start stops it.
    QVERIFY(!instrument.received().contains(QStringLiteral("ABOR")));
}

void TestProgram::killingDuringAScanLeavesAReadableStore()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    program.kill();

    const QDir store(program.directory() + QStringLiteral("/MY00000042_Data"));
    const QString file = store.filePath(store.entryList({QStringLiteral("*.db")}).constFirst());
    QCOMPARE(runSqlite(file, QStringLiteral("PRAGMA integrity_check")),
             QStringList{QStringLiteral("ok")});
    const Readings sent = readingsInReplies(instrument.sent());
    const Readings stored = readingsInStore(store.path());
    QCOMPARE(stored.keys(), sent.keys());
    for (auto channel = stored.cbegin(); channel != stored.cend(); ++channel) {
        // All but a fetch in flight when the program died.
        QVERIFY(channel->size() > 0);
        QCOMPARE(channel.value(), sent.value(channel.key()).mid(0, channel->size()));
    }

    // The next start finds the instrument running and stops it.
    ProgramProcess next(m_display.name());
    ProgramUser nextUser(m_display, next);
    const int mark = instrument.received().size();
    QVERIFY(nextUser.bringUp(instrument));
    QCOMPARE(instrument.received().mid(mark).count(QStringLiteral("ABOR")), 1);
}

/// Killed at any moment after the click on start, repeatedly in the same place; the first time
/// after readings have arrived.
void TestProgram::startAfterAKillFindsTheStoreIntact()
{
    bool isSet = false;
    const int wantedKills = qEnvironmentVariableIntValue("SCN_KILLS", &isSet);
    const int kills = isSet ? wantedKills : kKillsOfTheShortRun;
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);

    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    const QString store = program.directory() + QStringLiteral("/MY00000042_Data");
    Readings left;
    int killsWithReadings = 0;
    for (int i = 0; i < kills; ++i) {
        const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                             {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                              QStringLiteral("--rate"), QStringLiteral("40")});
        QVERIFY(user.bringUp(instrument));
        Readings found;
        QVERIFY(readIntact(store, found));
        QCOMPARE(found, left);
        QVERIFY(user.chooseChannels(instrument));
        user.clickStart();
        if (i == 0) {
            QTRY_VERIFY_WITH_TIMEOUT(fetches(instrument) >= 3, kStartWaitMs);
        }
        QTest::qWait(random.bounded(kLatestKillMs));
        program.kill();

        Readings stored;
        QVERIFY(readIntact(store, stored));
        const Readings sent = readingsInReplies(instrument.sent());
        // Nothing of the new scan yet, or all of it but a fetch in flight.
        QVERIFY(stored == left || isBeginningOf(stored, sent));
        QVERIFY(i > 0 || !stored.isEmpty());
        left = stored;
        killsWithReadings += left.isEmpty() ? 0 : 1;
    }
    qInfo("%d of %d kills left readings", killsWithReadings, kills);
}

void TestProgram::storeThatCannotBeWrittenDoesNotStopTheProgram()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    // A file blocks the path of the data directory; root cannot write through it either.
    QFile inTheWay(program.directory() + QStringLiteral("/MY00000042_Data"));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    QVERIFY2(program.log().contains(QStringLiteral("创建数据目录失败:")),
             qPrintable(program.log()));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kEndWaitMs);
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
}

/// The instrument falls silent, and the acquisition thread is still in an exchange when its time is
/// over: it is woken, not terminated.
void TestProgram::exitsWithAHangingReplyAreClean()
{
    bool isSet = false;
    const int wantedExits = qEnvironmentVariableIntValue("SCN_EXITS", &isSet);
    const int exits = isSet ? wantedExits : kExitsOfTheShortRun;
    for (int i = 0; i < exits; ++i) {
        SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                       {QStringLiteral("--slots"), QStringLiteral("1:13")});
        ProgramProcess program(m_display.name());
        program.start({instrument.resource()});
        QTRY_VERIFY_WITH_TIMEOUT(
            instrument.received().count(QStringLiteral("STAT:OPER:EVEN?")) >= 2, kStartWaitMs);
        instrument.freeze();
        // Longer than the pause between two passes: the next query is out, unanswered.
        QTest::qWait(1500);
        program.write("exit\n");
        QVERIFY(program.waitForEnd(kStartWaitMs));
        instrument.thaw();
        QVERIFY2(!program.crashed() && program.exitCode() == 0, qPrintable(program.log()));
        QVERIFY2(!program.log().contains(QStringLiteral("强制终止")), qPrintable(program.log()));
        QVERIFY2(!program.log().contains(QStringLiteral("ERROR: ")), qPrintable(program.log()));
    }
}

SCN_TEST(TestProgram, QCoreApplication)
#include "test_program.moc"
