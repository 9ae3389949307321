#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "faultyvfs.h"
#include "skippedwaits.h"
#include "storage/connectionpool.h"
#include "storage/curvedatadb.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "storeobserver.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <algorithm>
#include <memory>

// The store on a disk whose nth write, sync or open fails, for every n: what was seen committed
// stays, exactly once, and readings are stored again when the disk works again.

using faultyvfs::Fault;
using faultyvfs::Operation;

namespace {

constexpr int kCurves = 3;
constexpr int kSpanMs = 20000;
constexpr int kReadings = 200;
constexpr int kReadingsToACheckpoint = 420;
constexpr int kFewReadings = 80;
constexpr int kReadingsAfter = 2 * kCurves;
constexpr qint64 kRepairMs = 5000;
constexpr int kCloseMs = 60000;

/// The short run tries every fault up to this number, and then every so many, by the row's stride.
constexpr int kEveryFaultUpTo = 30;

qint64 g_present = 0;

qint64 present()
{
    return g_present;
}

QString one(const char* text)
{
    return QString::fromLatin1(text);
}

/// A reading and where it belongs, by the test's own calculation.
struct Reading
{
    int curveId = 0;
    qint64 time = 0;
    double value = 0.0;
    QString dateKey;
    QString table;
};

/// How the faults meet the store.
enum class Scene {
    Running,  ///< The store is open; the readings cross noon, where new tables begin.
    Starting, ///< The store opens a file that has the curves.
    Midnight, ///< A new day's file is created and the curves are registered in it.
    PastDay,  ///< Late readings of yesterday.
};

constexpr const char* kFirstReadings[] = {
    "2026-01-12 11:59:50.000",
    "2026-01-12 11:30:00.000",
    "2026-01-12 23:59:59.000",
    "2026-01-12 11:59:58.500",
};

qint64 firstReadingOf(Scene scene)
{
    return localTime(kFirstReadings[static_cast<int>(scene)]);
}

/// A day file with the curves, as left by an earlier start of the program.
QString makeTemplate(const QTemporaryDir& directory)
{
    scn::setStoreClock(&present);
    g_present = localTime("2026-01-12 11:00:00.000");
    {
        CurveDataDB store(directory.path());
        for (int curve = 1; curve <= kCurves; ++curve) {
            store.registerCurve(QStringLiteral("10%1(V)").arg(curve));
        }
        store.closeForExit(QDeadlineTimer(kCloseMs));
    }
    return directory.filePath(one("20260112.db"));
}

/// One run of a scene with one fault.
class Run
{
public:
    Run(Scene scene, int readings, const QString& templateFile)
        : m_scene(scene)
        , m_first(firstReadingOf(scene))
        , m_wanted(readings)
        , m_observer(m_directory.path())
    {
        setPresentFor(m_first);
        QFile::copy(templateFile, path("20260112"));
        if (scene == Scene::PastDay) {
            QFile::copy(templateFile, path("20260113"));
        }
    }

    /// Appends the scene's readings with the fault, and some more without it.
    void play(const Fault& fault)
    {
        if (m_scene != Scene::Starting) {
            openStore();
        }
        faultyvfs::arm(fault);
        if (m_scene == Scene::Starting) {
            openStore();
        }
        const int step = kSpanMs / m_wanted;
        for (int i = 0; i < m_wanted; ++i) {
            append(i * step);
        }
        faultyvfs::disarm();
        m_failures = faultyvfs::failures();
        m_during = m_readings.size();
        for (int i = 0; i < kReadingsAfter; ++i) {
            append(kSpanMs + kRepairMs + i * step);
        }
        m_observer.close();
        m_store->closeForExit(QDeadlineTimer(kCloseMs));
    }

    int failures() const { return m_failures; }

    /// Readings missing after they were appended while the fault was set.
    int lost() const
    {
        return static_cast<int>(std::count(m_seen.cbegin(), m_seen.cbegin() + m_during, false));
    }

    /// What is wrong with the store afterwards; empty if nothing is.
    QString complaint()
    {
        for (int i = m_during; i < m_seen.size(); ++i) {
            if (!m_seen.at(i)) {
                return QStringLiteral("reading %1 after the fault is not stored").arg(i - m_during);
            }
        }
        const QStringList keys = QDir(m_directory.path())
                                     .entryList({one("*.db")}, QDir::Files)
                                     .replaceInStrings(one(".db"), QString());
        for (const Reading& reading : qAsConst(m_readings)) {
            if (!keys.contains(reading.dateKey)) {
                return reading.dateKey + QStringLiteral(" is not there");
            }
        }
        for (const QString& key : keys) {
            const QString file = path(qPrintable(key));
            const QStringList check = dayfile::rows(file, one("PRAGMA integrity_check"));
            if (check != QStringList{one("ok")}) {
                return key + QStringLiteral(": ") + check.join(QLatin1Char(' '));
            }
            const QStringList strays = dayfile::rows(file, one("PRAGMA foreign_key_check"));
            if (!strays.isEmpty()) {
                return key + QStringLiteral(": ") + strays.join(QLatin1Char(' '));
            }
            const QString rows = compareRows(key);
            if (!rows.isEmpty()) {
                return rows;
            }
        }
        return compareExtremes();
    }

private:
    void setPresentFor(qint64 time)
    {
        g_present = m_scene == Scene::PastDay ? time + kDayLengthMs : time;
    }

    void openStore() { m_store = std::make_unique<CurveDataDB>(m_directory.path()); }

    void append(qint64 offset)
    {
        Reading reading;
        reading.curveId = 1 + m_readings.size() % kCurves;
        reading.time = m_first + offset;
        reading.value = m_readings.size() + 1;
        const QDateTime local = QDateTime::fromMSecsSinceEpoch(reading.time);
        const qint64 midnight = local.date().startOfDay().toMSecsSinceEpoch();
        reading.dateKey = local.toString(one("yyyyMMdd"));
        reading.table = DayFileWriter::tableName(
            reading.curveId, midnight + (reading.time - midnight) / kBatchMs * kBatchMs);
        setPresentFor(reading.time);
        m_store->appendPoint(reading.curveId, reading.time, reading.value);
        m_readings.append(reading);
        m_seen.append(m_observer.count(reading.dateKey, reading.table, reading.curveId,
                                       reading.time, reading.value) == 1);
    }

    /// Each reading that was seen is there once, and there are no other rows.
    QString compareRows(const QString& key)
    {
        QStringList expected;
        for (int i = 0; i < m_readings.size(); ++i) {
            const Reading& reading = m_readings.at(i);
            if (m_seen.at(i) && reading.dateKey == key) {
                expected.append(QStringLiteral("%1|%2|%3|%4.0")
                                    .arg(reading.table)
                                    .arg(reading.curveId)
                                    .arg(reading.time)
                                    .arg(reading.value));
            }
        }
        const QString file = path(qPrintable(key));
        QStringList found;
        const QStringList tables = dayfile::rows(
            file,
            one("SELECT name FROM sqlite_master WHERE type = 'table' AND name LIKE '%batch_2%'"));
        for (const QString& table : tables) {
            found += dayfile::rows(
                file, QStringLiteral("SELECT '%1', curve_id, timestamp, value FROM %1").arg(table));
        }
        const QStringList catalogue =
            dayfile::rows(file, one("SELECT table_name FROM batch_metadata"));
        if (QSet<QString>(catalogue.begin(), catalogue.end()) !=
            QSet<QString>(tables.begin(), tables.end())) {
            return QStringLiteral("tables %1, catalogue %2")
                .arg(tables.join(QLatin1Char(' ')), catalogue.join(QLatin1Char(' ')));
        }
        expected.sort();
        found.sort();
        if (found == expected) {
            return {};
        }
        return QStringLiteral("%1: %2 rows where %3 were seen\n%4\n--\n%5")
            .arg(key)
            .arg(found.size())
            .arg(expected.size())
            .arg(found.join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')));
    }

    /// Today's file knows the curves under the readings' ids, and their last times.
    QString compareExtremes()
    {
        QStringList expected;
        for (int curve = 1; curve <= kCurves; ++curve) {
            expected.append(
                QStringLiteral("%1|10%1(V)|%2")
                    .arg(curve)
                    .arg(
                        m_readings.at(m_readings.size() - 1 - (m_readings.size() - curve) % kCurves)
                            .time));
        }
        const QStringList found = dayfile::rows(path(qPrintable(todayKey())),
                                                one("SELECT i.curve_id, i.name, m.max_time FROM "
                                                    "curve_info i LEFT JOIN curve_metadata m "
                                                    "ON m.curve_id = i.curve_id ORDER BY 1"));
        if (found == expected) {
            return {};
        }
        return QStringLiteral("extremes %1 where %2 were expected")
            .arg(found.join(QLatin1Char(' ')), expected.join(QLatin1Char(' ')));
    }

    QString path(const char* key) const { return m_directory.filePath(one(key) + one(".db")); }

    Scene m_scene;
    qint64 m_first;
    int m_wanted;
    QTemporaryDir m_directory;
    StoreObserver m_observer;
    std::unique_ptr<CurveDataDB> m_store;
    QVector<Reading> m_readings;
    QVector<bool> m_seen;
    int m_during = 0;
    int m_failures = 0;
};

} // namespace

class TestStoreFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFaultIsSurvived_data();
    void everyFaultIsSurvived();

private:
    QTemporaryDir m_templateDirectory;
    QString m_templateFile;
    const SkippedWaits m_waits;
};

void TestStoreFaults::initTestCase()
{
    QVERIFY(faultyvfs::install());
    m_templateFile = makeTemplate(m_templateDirectory);
    QCOMPARE(dayfile::rows(m_templateFile, one("SELECT count(*) FROM curve_info")),
             QStringList{QString::number(kCurves)});
}

void TestStoreFaults::everyFaultIsSurvived_data()
{
    QTest::addColumn<Scene>("scene");
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<int>("stride"); // of the short run
    QTest::addColumn<int>("mostLost");
    const auto add = [](const char* name, Scene scene, Operation operation, int result,
                        bool lasting, bool torn, int stride, int mostLost) {
        Fault fault;
        fault.operation = operation;
        fault.lasting = lasting;
        fault.torn = torn;
        fault.result = result;
        QTest::newRow(name) << scene << fault << stride << mostLost;
    };
    constexpr int kAny = 1000000;
    add("running, one write, I/O error", Scene::Running, Operation::Write, SQLITE_IOERR_WRITE,
        false, true, 173, 1);
    add("running, one write, disk full", Scene::Running, Operation::Write, SQLITE_FULL, false,
        false, 173, 1);
    add("running, all writes, I/O error", Scene::Running, Operation::Write, SQLITE_IOERR_WRITE,
        true, false, 173, kAny);
    add("running, all writes, disk full", Scene::Running, Operation::Write, SQLITE_FULL, true, true,
        173, kAny);
    add("running, one sync", Scene::Running, Operation::Sync, SQLITE_IOERR_FSYNC, false, false, 1,
        1);
    add("running, all syncs", Scene::Running, Operation::Sync, SQLITE_IOERR_FSYNC, true, false, 1,
        kAny);
    add("starting, one write", Scene::Starting, Operation::Write, SQLITE_IOERR_WRITE, false, true,
        173, 1);
    add("starting, all writes", Scene::Starting, Operation::Write, SQLITE_FULL, true, false, 173,
        kAny);
    add("starting, one sync", Scene::Starting, Operation::Sync, SQLITE_IOERR_FSYNC, false, false, 1,
        1);
    add("starting, all syncs", Scene::Starting, Operation::Sync, SQLITE_IOERR_FSYNC, true, false, 1,
        kAny);
    add("starting, one open", Scene::Starting, Operation::Open, SQLITE_CANTOPEN, false, false, 1,
        1);
    add("starting, all opens", Scene::Starting, Operation::Open, SQLITE_CANTOPEN, true, false, 1,
        kAny);
    add("midnight, one write", Scene::Midnight, Operation::Write, SQLITE_IOERR_WRITE, false, true,
        173, 1);
    add("midnight, all writes", Scene::Midnight, Operation::Write, SQLITE_FULL, true, false, 173,
        kAny);
    add("midnight, one sync", Scene::Midnight, Operation::Sync, SQLITE_IOERR_FSYNC, false, false, 1,
        1);
    add("midnight, all syncs", Scene::Midnight, Operation::Sync, SQLITE_IOERR_FSYNC, true, false, 1,
        kAny);
    add("midnight, one open", Scene::Midnight, Operation::Open, SQLITE_CANTOPEN, false, false, 1,
        1);
    add("midnight, all opens", Scene::Midnight, Operation::Open, SQLITE_CANTOPEN, true, false, 1,
        kAny);
    add("past day, one write", Scene::PastDay, Operation::Write, SQLITE_IOERR_WRITE, false, true,
        173, 1);
    add("past day, all writes", Scene::PastDay, Operation::Write, SQLITE_FULL, true, false, 173,
        kAny);
    add("past day, one sync", Scene::PastDay, Operation::Sync, SQLITE_IOERR_FSYNC, false, false, 1,
        1);
    add("past day, one open", Scene::PastDay, Operation::Open, SQLITE_CANTOPEN, false, false, 1, 1);
    add("past day, all opens", Scene::PastDay, Operation::Open, SQLITE_CANTOPEN, true, false, 1,
        kAny);
}

void TestStoreFaults::everyFaultIsSurvived()
{
    QFETCH(Scene, scene);
    QFETCH(Fault, fault);
    QFETCH(int, stride);
    QFETCH(int, mostLost);
    // An open that fails has nothing to do with a checkpoint, and late readings open files often.
    const bool everyFault = qEnvironmentVariableIsSet("SCN_EVERY_FAULT");
    int readings = fault.operation == Operation::Open && !everyFault ? kFewReadings : kReadings;
    if (fault.operation == Operation::Sync || scene == Scene::Running) {
        readings = kReadingsToACheckpoint;
    }
    if (everyFault) {
        stride = 1;
    }
    int runs = 0;
    int worst = 0;
    QStringList complaints;
    for (fault.nth = 1;; fault.nth += fault.nth < kEveryFaultUpTo ? 1 : stride) {
        Run run(scene, readings, m_templateFile);
        QStringList log;
        {
            const LogCapture capture;
            run.play(fault);
            log = capture.lines();
        }
        QString complaint = run.complaint();
        if (complaint.isEmpty() && run.lost() > mostLost) {
            complaint = QStringLiteral("%1 readings lost").arg(run.lost());
        }
        if (!complaint.isEmpty()) {
            complaints.append(QStringLiteral("n = %1: %2\n%3")
                                  .arg(fault.nth)
                                  .arg(complaint, log.join(QLatin1Char('\n'))));
        }
        if (run.failures() == 0) {
            QCOMPARE(run.lost(), 0);
            break;
        }
        ++runs;
        worst = std::max(worst, run.lost());
    }
    qInfo("%d faults, the last at n < %d; at most %d readings lost", runs, fault.nth, worst);
    QVERIFY(runs > 0);
    QVERIFY2(complaints.isEmpty(),
             qPrintable(QStringLiteral("%1 complaints:\n").arg(complaints.size()) +
                        complaints.join(one("\n\n"))));
}

Q_DECLARE_METATYPE(Scene)
Q_DECLARE_METATYPE(faultyvfs::Fault)

SCN_TEST(TestStoreFaults, QCoreApplication)
#include "test_storefaults.moc"
