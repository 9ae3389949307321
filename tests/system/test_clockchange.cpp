#include "support/exportedfile.h"
#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/variable.h"
#include "support/virtualdisplay.h"

#include <QDateTime>
#include <QDir>
#include <QTest>
#include <QTimeZone>

#include <ctime>

namespace {

constexpr int kWaitMs = 60000;
constexpr int kSecondsToChange = 40;
constexpr int kHourS = 3600;
constexpr qint64 kMsPerSecond = 1000;
const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");
const QString kTextFormat = QStringLiteral("yyyy MM dd hh mm ss");

/// Two o'clock of normal time, in a zone of its own where that is soon. Then the clock is set: forward to
/// three, or back from three.
class ClockChange
{
public:
    explicit ClockChange(bool isSpring)
        : m_moment(QDateTime::currentDateTimeUtc().addSecs(kSecondsToChange))
        , m_offset(offsetOf(m_moment.time()))
        , m_zone("TZ", zoneText(isSpring))
    {
        tzset();
    }
    ~ClockChange() = default;
    ClockChange(const ClockChange&) = delete;
    ClockChange& operator=(const ClockChange&) = delete;

    bool isOver() const { return QDateTime::currentDateTimeUtc() > m_moment; }

    /// The moment of a local time by the normal clock, or an hour earlier by the summer's.
    qint64 normal(const QDateTime& local) const { return utc(local) - m_offset * kMsPerSecond; }
    qint64 summer(const QDateTime& local) const { return normal(local) - kHourS * kMsPerSecond; }

    /// The change itself.
    qint64 moment() const { return m_moment.toMSecsSinceEpoch(); }

private:
    static qint64 utc(const QDateTime& local)
    {
        return QDateTime(local.date(), local.time(), Qt::UTC).toMSecsSinceEpoch();
    }

    /// Seconds east of Greenwich where it is two o'clock then.
    static int offsetOf(const QTime& time)
    {
        constexpr int kDayS = 24 * kHourS;
        const int east = (2 * kHourS - QTime(0, 0).secsTo(time) + kDayS) % kDayS;
        return east > kDayS / 2 ? east - kDayS : east;
    }

    /// "month.week.weekday" of a date.
    static QByteArray rule(const QDate& date)
    {
        return 'M' + QByteArray::number(date.month()) + '.' +
               QByteArray::number((date.day() - 1) / 7 + 1) + '.' +
               QByteArray::number(date.dayOfWeek() % 7);
    }

    QByteArray zoneText(bool isSpring) const
    {
        constexpr int kSummerDays = 100;
        const QDate day = m_moment.addSecs(m_offset).date();
        const QDate spring = isSpring ? day : day.addDays(-kSummerDays);
        const QDate autumn = isSpring ? day.addDays(kSummerDays) : day;
        const QByteArray distance =
            QTime(0, 0).addSecs(qAbs(m_offset)).toString(QStringLiteral("hh:mm:ss")).toLatin1();
        // A zone is named by what must be added to its time to get UTC.
        return QByteArray("NOR") + (m_offset < 0 ? '+' : '-') + distance + "SUM" +
               summerDistance() + ',' + rule(spring) + "/2," + rule(autumn) + "/3";
    }

    QByteArray summerDistance() const
    {
        const int east = m_offset + kHourS;
        return (east < 0 ? '+' : '-') +
               QTime(0, 0).addSecs(qAbs(east)).toString(QStringLiteral("hh:mm:ss")).toLatin1();
    }

    QDateTime m_moment;
    int m_offset;
    Variable m_zone;
};

/// What the store must hold of records whose stamps are those of a clock that is never set: here
/// `records` has them as if they were UTC.
Readings storedOf(const Readings& records, const ClockChange& change, bool isSpring)
{
    Readings stored;
    for (auto channel = records.cbegin(); channel != records.cend(); ++channel) {
        for (const auto& reading : channel.value()) {
            const QDateTime stamp = QDateTime::fromMSecsSinceEpoch(reading.first, Qt::UTC);
            const int hour = stamp.time().hour();
            if (isSpring && hour == 2) {
                continue; // a time that there is not
            }
            const bool isSummer = isSpring ? hour > 2 : hour < 3;
            stored[channel.key()].append(
                {isSummer ? change.summer(stamp) : change.normal(stamp), reading.second});
        }
    }
    return stored;
}

} // namespace

/// A run in the night in which the clock is set. The instrument's own clock knows no summer time.
class TestClockChange : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void runGoesOnOverIt_data();
    void runGoesOnOverIt();

private:
    VirtualDisplay m_display;
};

void TestClockChange::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestClockChange::runGoesOnOverIt_data()
{
    QTest::addColumn<bool>("isSpring");
    QTest::newRow("autumn") << false;
    QTest::newRow("spring") << true;
}

void TestClockChange::runGoesOnOverIt()
{
    QFETCH(bool, isSpring);
    const ClockChange change(isSpring);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    ProgramUser user(m_display, program);
    QVERIFY(user.bringUp(instrument));
    QVERIFY(user.startScan(instrument));
    QVERIFY2(!change.isOver(), "the scan began too late");
    QVERIFY(QTest::qWaitFor([&change] { return change.isOver(); }, 2000 * kSecondsToChange));
    QVERIFY(ProgramUser::waitForPolls(instrument, 4));
    user.clickStart();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kWaitMs);
    const auto rests = [&instrument] {
        const QStringList lines = instrument.received();
        return lines.mid(lines.size() - 3) == QStringList{kPoll, kPoll, kPoll};
    };
    QVERIFY(QTest::qWaitFor(rests, kWaitMs));

    const QDir directory(program.directory());
    QVERIFY(user.openExportDialog());
    user.clickExportToFile();
    const QStringList csv{QStringLiteral("*.csv")};
    QTRY_COMPARE_WITH_TIMEOUT(directory.entryList(csv).size(), 1, kWaitMs);
    const QString file = directory.filePath(directory.entryList(csv).constFirst());
    QTRY_VERIFY_WITH_TIMEOUT(exportedLines(file).size() > 6, kWaitMs);
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));

    Readings records;
    {
        const Variable zone("TZ", "UTC0");
        tzset();
        records = readingsInReplies(instrument.sent());
    }
    tzset();
    const Readings stored = storedOf(records, change, isSpring);
    QCOMPARE(stored.keys(), (QList<int>{101, 102, 103, 104}));
    QCOMPARE(
        difference(readingsInStore(directory.filePath(QStringLiteral("MY00000042_Data"))), stored),
        QString());
    // There were records on both sides of the change.
    QVERIFY(stored.value(101).constFirst().first < change.moment());
    QCOMPARE(countOf(stored) < countOf(records), isSpring);
    QCOMPARE(stored.value(101).constLast().first > change.moment(), !isSpring);

    // The run began in one time and ended in the other; its texts are those of the computer's clock.
    const QStringList lines = exportedLines(file);
    const auto moment = [&lines](int line) {
        return QDateTime::fromString(lines.at(line).section(QLatin1Char(','), 1), kTextFormat);
    };
    const qint64 start = isSpring ? change.normal(moment(3)) : change.summer(moment(3));
    const qint64 end = isSpring ? change.summer(moment(4)) : change.normal(moment(4));
    QVERIFY(start < change.moment() && change.moment() < end);
    QCOMPARE(lines.mid(6), exportedRows(stored, start, end));
}

SCN_TEST(TestClockChange, QCoreApplication)
#include "test_clockchange.moc"
