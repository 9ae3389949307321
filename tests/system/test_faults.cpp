#include "support/faultsession.h"
#include "support/testprogram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTime>

#include <algorithm>
#include <memory>

namespace {

constexpr int kEndWaitMs = 20000;
/// Six pauses of three seconds and seven polls that fail at once, and a busy machine.
constexpr int kLossWaitMs = 18000 + 12000;
constexpr int kExchangeMs = 5000;
/// Ticked by ProgramUser::startScan().
constexpr int kChannels = 4;
/// Rate at which half a minute of readings takes more than one reply, even on a serial line.
constexpr int kSomeReadings = 60;
/// Rate at which two time-outs of readings take more than one reply.
constexpr int kManyReadings = 100;

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");

} // namespace

/// The program against a misbehaving instrument: nothing crashes or hangs beyond the stated waits,
/// what can be stored is, exchanges stay in step, and a lost link recovers.
class TestFaults : public FaultSession
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(hasDisplay(), "Xvfb did not start"); }
    void init() { beginSession(); }
    void cleanup() { endSession(QTest::currentTestFailed()); }

    void refusedConnectionAtStart();
    void silentIdentityAtStart();
    void garbledReadBackAtStart();
    void garbledIdentityKeepsTheStoreInItsPlace();
    void refusedTickGoesBackAndStartsNothing();
    void spoiltBatchesCostOnlyThemselves();
    void missingRepliesCostOnlyTheirTime_data();
    void missingRepliesCostOnlyTheirTime();
    void lateRepliesAreNotTakenForTheNext();
    void clockJumpIsStoredAsItComes();
    void triggersAndAlarmsFromOutsideComeThrough();
    void usedElsewhereEndsInTheOverlayAndRecovers();
    void droppedLinkRecovers_data();
    void droppedLinkRecovers();
    void storeThatComesLateTakesTheRest();
    void linkedStoreIsLeftAlone();
};

void TestFaults::refusedConnectionAtStart()
{
    m_instrument = std::make_unique<SimulatedInstrument>(
        Transport::Tcp, options({QStringLiteral("--fault"), QStringLiteral("refuse")}));
    QVERIFY(m_user->open(*m_instrument));
    QTRY_VERIFY_WITH_TIMEOUT(m_user->seesRecoveryButton(), kEndWaitMs);
    QCOMPARE(m_instrument->received(), QStringList());
    // A failed attempt leaves the button.
    m_user->clickRecovery();
    QTest::qWait(1000);
    QTRY_VERIFY_WITH_TIMEOUT(m_user->seesRecoveryButton(), kEndWaitMs);
    QVERIFY(order(QStringLiteral("clear")));
    QVERIFY(recover());
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(stopScan());
    QVERIFY(leave());
    QCOMPARE(difference(stored(), readingsInReplies(m_instrument->sent())), QString());
}

void TestFaults::silentIdentityAtStart()
{
    m_instrument = std::make_unique<SimulatedInstrument>(
        Transport::Tcp,
        options({QStringLiteral("--fault"), QStringLiteral("silence for *IDN? times 1")}));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(m_user->open(*m_instrument));
    QTRY_VERIFY_WITH_TIMEOUT(m_user->seesRecoveryButton(), kEndWaitMs);
    QVERIFY2(timer.elapsed() >= kExchangeMs, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_instrument->received(),
             (QStringList{QStringLiteral("*CLS"), QStringLiteral("*IDN?")}));
    QVERIFY(recover());
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(leave());
}

void TestFaults::garbledReadBackAtStart()
{
    QStringList faults;
    for (const char* fault :
         {"oversize for SYST:CTYP? 2 times 1", "garbage for FUNC? (@101) times 2",
          "truncate 3 for VOLT:DC:NPLC? (@102) times 1", "shorten 2 for ROUT:SCAN? times 1",
          "garbage 300 for CALC:SCAL:GAIN? (@103)", "oversize 100000 for MMEM:LOG:ENAB? times 1",
          "reject for SYST:DATE *", "delay 5600 for MEM:STAT:NAME? 3 times 1",
          "delay 300 for STAT:OPER:COND? times 1", "garbage for TRIG:SOUR? times 1"}) {
        faults << QStringLiteral("--fault") << QString::fromLatin1(fault);
    }
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options(faults));
    QVERIFY(m_user->bringUp(*m_instrument));
    // All of it has happened, and what follows is in step again.
    QCOMPARE(m_instrument->faults().size(), 11);
    QVERIFY(order(QStringLiteral("clear")));
    // The error of the refused date would be attributed to the first tick.
    StreamClient hand;
    QVERIFY(hand.connectTo(m_instrument->port()));
    QCOMPARE(hand.ask("*CLS;SYST:ERR?"), QByteArray("+0,\"No error\""));
    hand.close();
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(stopScan());
    QVERIFY(leave());
    QCOMPARE(difference(stored(), readingsInReplies(m_instrument->sent())), QString());
    QCOMPARE(stored().keys(), (QList<int>{101, 102, 103, 104}));
}

void TestFaults::garbledIdentityKeepsTheStoreInItsPlace()
{
    m_instrument = std::make_unique<SimulatedInstrument>(
        Transport::Tcp, options({QStringLiteral("--fault"), QStringLiteral("garbage 90 for *IDN?"),
                                 QStringLiteral("--seed"), QStringLiteral("3")}));
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(stopScan());
    QVERIFY(leave());
    // Whatever the name, it is directly below the program.
    const QStringList stores =
        QDir(m_program->directory())
            .entryList({QStringLiteral("*_Data")}, QDir::Dirs | QDir::Hidden);
    QCOMPARE(stores.size(), 1);
    const QString store = m_program->directory() + QLatin1Char('/') + stores.constFirst();
    QCOMPARE(difference(readingsInStore(store), readingsInReplies(m_instrument->sent())),
             QString());
}

void TestFaults::refusedTickGoesBackAndStartsNothing()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QVERIFY(m_user->bringUp(*m_instrument));
    const QString kept = storeDirectory();
    QVERIFY(QDir().mkpath(kept));
    QVERIFY(order(QStringLiteral("fault reject for ROUT:SCAN *")));
    m_user->tickChannel(0);
    QVERIFY(waitForFault(QStringLiteral("reject")));
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    m_user->clickStart();
    // The message disappears after three seconds.
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 5));
    QVERIFY(!m_instrument->received().contains(QStringLiteral("INIT")));
    QVERIFY(QDir(kept).exists());
    QVERIFY(QDir().rmdir(kept));

    // The channel can be ticked again, so it was no longer ticked.
    QVERIFY(order(QStringLiteral("clear")));
    m_user->tickChannel(0);
    QTRY_COMPARE_WITH_TIMEOUT(m_instrument->received().count(QStringLiteral("ROUT:SCAN (@101)")), 2,
                              kEndWaitMs);
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    m_user->clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(m_instrument->received().filter(QStringLiteral("R? ")).size() >= 2,
                             kEndWaitMs);
    QVERIFY(stopScan());
    QVERIFY(leave());
    QCOMPARE(difference(stored(), readingsInReplies(m_instrument->sent())), QString());
    QCOMPARE(stored().keys(), QList<int>{101});
}

void TestFaults::spoiltBatchesCostOnlyThemselves()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    // One after another, each on a fetch of its own.
    for (const char* fault :
         {"badrecord month for R? * times 1", "badrecord unit for R? * times 1",
          "badrecord field for R? * times 1", "garbage 200 for R? * times 1",
          "shorten 120 for R? * times 1", "oversize 50000 for R? * times 1",
          "garbage 30 for DATA:POIN? times 1", "garbage 30 for STAT:OPER:COND? times 1"}) {
        QVERIFY(order(QStringLiteral("fault ") + QString::fromLatin1(fault)));
        QVERIFY2(waitForFault(QString::fromLatin1(fault)), fault);
    }
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    QVERIFY(stopScan());
    QVERIFY(leave());

    const Readings storable = storableReadings(m_instrument->sent());
    QCOMPARE(difference(stored(), storable), QString());
    QVERIFY(countOf(storable) > 200);
    QCOMPARE(m_program->log().count(QStringLiteral("无效的日期时间格式")), 1);
    QCOMPARE(m_program->log().count(QStringLiteral("Invalid voltage format:")), 1);
    QCOMPARE(m_program->log().count(QStringLiteral("无效的数据记录，跳过解析")), 2);
    QVERIFY(m_program->log().contains(QStringLiteral("存在不完整的数据记录，已忽略")));
}

void TestFaults::missingRepliesCostOnlyTheirTime_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::newRow("batches") << QStringList{QStringLiteral("silence for R? * times 2"),
                                            QStringLiteral("reject -410 for R? * times 1")};
    QTest::newRow("truncated") << QStringList{QStringLiteral("truncate 10 for R? * times 1")};
    QTest::newRow("questions") << QStringList{
        QStringLiteral("silence for DATA:POIN? times 1"),
        QStringLiteral("silence for STAT:OPER:COND? times 1"),
        QStringLiteral("silence for STAT:OPER:EVEN? times 1")};
}

void TestFaults::missingRepliesCostOnlyTheirTime()
{
    QFETCH(QStringList, faults);
    m_instrument =
        std::make_unique<SimulatedInstrument>(Transport::Tcp, options({}, kManyReadings));
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    for (const QString& fault : qAsConst(faults)) {
        QVERIFY(order(QStringLiteral("fault ") + fault));
        QVERIFY2(waitForFault(fault), qPrintable(fault));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(ProgramUser::waitForPolls(*m_instrument, 1));
        QVERIFY2(timer.elapsed() < 3 * kExchangeMs, qPrintable(fault));
    }
    QVERIFY(stopScan());
    QVERIFY(!m_user->seesRecoveryButton());
    QVERIFY(leave());
    // Readings of a swallowed or refused fetch stay in the instrument and come with the next
    // attempt, more than one reply holds; those of the broken-off fetch are lost.
    QCOMPARE(difference(stored(), storableReadings(m_instrument->sent())), QString());
    const bool breaksOff = faults.constFirst().startsWith(QLatin1String("truncate"));
    QCOMPARE(gapIn(stored(), 1000.0 * kChannels / kManyReadings).isEmpty(), !breaksOff);
    QVERIFY(!m_program->log().contains(QStringLiteral("无效的数据记录")));
}

void TestFaults::lateRepliesAreNotTakenForTheNext()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    // They arrive in the one-second pause after the next poll.
    for (const char* query : {"DATA:POIN?", "STAT:OPER:COND?"}) {
        const int polls = m_instrument->received().count(kPoll);
        QVERIFY(order(QStringLiteral("fault delay 5500 for %1 times 1").arg(QLatin1String(query))));
        QVERIFY2(waitForFault(QLatin1String(query)), query);
        QTRY_VERIFY_WITH_TIMEOUT(m_instrument->received().count(kPoll) > polls + 2, kEndWaitMs);
    }
    QVERIFY(stopScan());
    QVERIFY(leave());
    QCOMPARE(difference(stored(), readingsInReplies(m_instrument->sent())), QString());
    // Each fetch asks for the count just reported: no answer has slipped.
    const QStringList lines = m_instrument->received();
    QCOMPARE(lines.filter(QRegExp(QStringLiteral("^R\\? (256|16|32|2048)$"))).size(), 0);
    QVERIFY(!m_program->log().contains(QStringLiteral("无效的数据记录")));
}

void TestFaults::clockJumpIsStoredAsItComes()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    // Two hours one way and one hour back, within the day.
    const int way = QTime::currentTime().hour() < 12 ? 1 : -1;
    QVERIFY(order(QStringLiteral("fault clock %1 for R? *").arg(7200 * way)));
    QVERIFY(waitForFault(QStringLiteral("clock")));
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    QVERIFY(order(QStringLiteral("jump %1").arg(-3600 * way)));
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    // The day before has no file, so one is created.
    QVERIFY(order(QStringLiteral("jump -90000")));
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    QVERIFY(order(QStringLiteral("jump 90000")));
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    QVERIFY(stopScan());
    QVERIFY(leave());

    // The store returns them in order of time.
    Readings sent = readingsInReplies(m_instrument->sent());
    for (auto& channel : sent) {
        std::sort(channel.begin(), channel.end());
    }
    QCOMPARE(difference(stored(), sent), QString());
    const QDir store(storeDirectory());
    QCOMPARE(store.entryList({QStringLiteral("*.db")}).size(), 2);
}

void TestFaults::triggersAndAlarmsFromOutsideComeThrough()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QVERIFY(m_user->bringUp(*m_instrument));
    // Someone changes the instrument's settings by hand.
    StreamClient hand;
    QVERIFY(hand.connectTo(m_instrument->port()));
    QCOMPARE(hand.ask("TRIG:SOUR EXT;SOUR?"), QByteArray("EXT"));
    QVERIFY(order(QStringLiteral("alarm 102 2")));
    m_user->tickChannel(0);
    m_user->tickChannel(1);
    QTRY_VERIFY_WITH_TIMEOUT(
        m_instrument->received().contains(QStringLiteral("ROUT:SCAN (@101,102)")), kEndWaitMs);
    m_user->clickStart();
    // It waits for its trigger, and the scan continues.
    QTRY_VERIFY_WITH_TIMEOUT(m_instrument->sent().count(QStringLiteral("+32")) >= 2, kEndWaitMs);
    for (int sweep = 1; sweep <= 3; ++sweep) {
        QVERIFY(order(QStringLiteral("trigger external")));
        QTRY_COMPARE_WITH_TIMEOUT(m_instrument->received().count(QStringLiteral("R? 2")), sweep,
                                  kEndWaitMs);
        QVERIFY(ProgramUser::waitForPolls(*m_instrument, 1));
    }
    QVERIFY(stopScan());
    QVERIFY(leave());
    const Readings sent = readingsInReplies(m_instrument->sent());
    QCOMPARE(countOf(sent), 6);
    QCOMPARE(difference(stored(), sent), QString());
    QCOMPARE(m_instrument->sent().join(QString()).count(QStringLiteral(",101,0")), 3);
    QCOMPARE(m_instrument->sent().join(QString()).count(QStringLiteral(",102,2")), 3);
}

void TestFaults::usedElsewhereEndsInTheOverlayAndRecovers()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(!m_user->seesRecoveryButton());
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(order(QStringLiteral("fault elsewhere for STAT:OPER:EVEN? times 1")));
    QTRY_VERIFY_WITH_TIMEOUT(m_user->seesRecoveryButton(), kEndWaitMs);
    // The program leaves the instrument to its other user.
    QTest::qWait(1500);
    QCOMPARE(m_instrument->sent().constLast(), QStringLiteral("+2048"));
    QVERIFY(!m_instrument->received().contains(QStringLiteral("ABOR")));
    QVERIFY(m_program->isRunning());

    // It finds it scanning, stops it and fetches what is left.
    QVERIFY(recover());
    QCOMPARE(m_instrument->received().count(QStringLiteral("ABOR")), 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_instrument->sent().constLast(), QStringLiteral("+0"), kEndWaitMs);
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 3));
    QVERIFY(leave());
    QCOMPARE(difference(stored(), readingsInReplies(m_instrument->sent())), QString());
}

void TestFaults::droppedLinkRecovers_data()
{
    QTest::addColumn<int>("transport");
    QTest::newRow("TCP") << static_cast<int>(Transport::Tcp);
    QTest::newRow("pseudo-terminal") << static_cast<int>(Transport::PseudoTerminal);
}

void TestFaults::droppedLinkRecovers()
{
    QFETCH(int, transport);
    // What accumulates in the instrument meanwhile takes more than one reply.
    m_instrument = std::make_unique<SimulatedInstrument>(static_cast<Transport>(transport),
                                                         options({}, kSomeReadings));
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(order(QStringLiteral("fault refuse")));
    QVERIFY(order(QStringLiteral("fault drop for R? * times 1")));
    QVERIFY(waitForFault(QStringLiteral("drop")));
    QElapsedTimer timer;
    timer.start();
    QTRY_VERIFY_WITH_TIMEOUT(m_user->seesRecoveryButton(), kLossWaitMs);
    QVERIFY2(timer.elapsed() >= 17000, qPrintable(QString::number(timer.elapsed())));

    // While no one can connect the button stays.
    m_user->clickRecovery();
    QTest::qWait(1000);
    QTRY_VERIFY_WITH_TIMEOUT(m_user->seesRecoveryButton(), kEndWaitMs);
    QVERIFY(order(QStringLiteral("clear")));
    QVERIFY(recover());
    QCOMPARE(m_instrument->received().count(QStringLiteral("ABOR")), 1);
    QVERIFY(waitForRest());
    QVERIFY(leave());
    QCOMPARE(difference(stored(), readingsInReplies(m_instrument->sent())), QString());
    QCOMPARE(gapIn(stored(), 1000.0 * kChannels / kSomeReadings), QString());
    QVERIFY(countOf(stored()) > 17 * kSomeReadings);
}

void TestFaults::storeThatComesLateTakesTheRest()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    QFile inTheWay(storeDirectory());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    inTheWay.close();
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 3));
    QVERIFY(inTheWay.remove());
    QTRY_COMPARE_WITH_TIMEOUT(stored().size(), kChannels, kEndWaitMs);
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 2));
    QVERIFY(stopScan());
    QVERIFY(leave());
    // From there on none is missing.
    Readings wanted = readingsInReplies(m_instrument->sent());
    const Readings rest = stored();
    for (auto channel = rest.cbegin(); channel != rest.cend(); ++channel) {
        auto& sent = wanted[channel.key()];
        QVERIFY(channel->size() > 10 && channel->size() < sent.size());
        sent = sent.mid(sent.size() - channel->size());
    }
    QCOMPARE(difference(rest, wanted), QString());
}

void TestFaults::linkedStoreIsLeftAlone()
{
    m_instrument = std::make_unique<SimulatedInstrument>(Transport::Tcp, options());
    const QTemporaryDir elsewhere;
    QFile kept(elsewhere.filePath(QStringLiteral("20200101.db")));
    QVERIFY(kept.open(QIODevice::WriteOnly));
    kept.close();
    QVERIFY(QFile::link(elsewhere.path(), storeDirectory()));
    QVERIFY(m_user->bringUp(*m_instrument));
    QVERIFY(m_user->startScan(*m_instrument));
    QVERIFY(stopScan());
    const auto starts = [this] { return m_instrument->received().count(QStringLiteral("INIT")); };
    m_user->clickStart();
    QTRY_COMPARE_WITH_TIMEOUT(starts(), 2, kEndWaitMs);
    QVERIFY(ProgramUser::waitForPolls(*m_instrument, 3));
    QVERIFY(stopScan());
    QVERIFY(leave());
    QCOMPARE(QDir(elsewhere.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("20200101.db")});
    QVERIFY(m_program->log().contains(QStringLiteral("数据目录是链接，不予使用")));
    QVERIFY(m_program->log().contains(QStringLiteral("数据目录是链接，不清理其内容")));
}

SCN_TEST(TestFaults, QCoreApplication)
#include "test_faults.moc"
