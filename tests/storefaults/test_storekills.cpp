#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "storage/shardnaming.h"
#include "storage/storeclock.h"
#include "support/testprogram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cstdio>

// A program killed while it stores: this one starts itself as a child that appends at full rate and
// prints each stored reading, and kills it at a random moment, repeatedly on one directory. Each
// child starts shortly before the next edge of a batch or a day.

namespace {

constexpr int kKillsOfTheShortRun = 50;
constexpr int kCurves = 4;
constexpr int kChildTimeoutMs = 120000;
constexpr unsigned kEarlyKillMs = 150;
constexpr unsigned kLateKillMs = 200;
constexpr qint64 kBeforeEdgeMs = 300;

qint64 g_present = 0;

qint64 present()
{
    return g_present;
}

QString one(const char* text)
{
    return QString::fromUtf8(text);
}

QString nameOf(int curve)
{
    return QStringLiteral("10%1(V)").arg(curve);
}

/// A child prints nothing but failures on standard error.
void sayFailures(QtMsgType level, const QMessageLogContext&, const QString& text)
{
    if (level != QtDebugMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
    }
}

/// Appends until killed; prints "curve time" for each stored reading.
int playWriter(const QString& directory, qint64 start)
{
    g_present = start;
    CurveDataDB store(directory);
    for (int curve = 1; curve <= kCurves; ++curve) {
        if (store.registerCurve(nameOf(curve)) != curve) {
            return 2;
        }
    }
    for (;;) {
        ++g_present;
        const int curve = static_cast<int>(1 + g_present % kCurves);
        store.appendPoint(curve, g_present, static_cast<double>(g_present % 1000));
        std::printf("%d %lld\n", curve, static_cast<long long>(g_present));
        std::fflush(stdout);
    }
}

/// Opens what the kills left, as the program does at its start, and prints for each curve the
/// number of readings found in the days from a midnight to a time.
int playReader(const QString& directory, qint64 from, qint64 to)
{
    g_present = to;
    CurveDataDB store(directory);
    QMap<int, int> found;
    for (int curve = 1; curve <= kCurves; ++curve) {
        found.insert(store.registerCurve(nameOf(curve)), 0);
    }
    for (qint64 day = from; day < to; day += kDayLengthMs) {
        for (auto it = found.begin(); it != found.end(); ++it) {
            *it += store.readCurveData(it.key(), day, day + kDayLengthMs - 1, 0).size();
        }
    }
    for (auto it = found.cbegin(); it != found.cend(); ++it) {
        std::printf("%d %d\n", it.key(), it.value());
    }
    store.closeForExit(QDeadlineTimer(5000));
    return 0;
}

int play(const QStringList& arguments)
{
    qInstallMessageHandler(sayFailures);
    scn::setStoreClock(&present);
    const SkippedWaits waits;
    const QString directory = arguments.value(1);
    const qint64 from = arguments.value(2).toLongLong();
    return arguments.value(0) == one("writer")
               ? playWriter(directory, from)
               : playReader(directory, from, arguments.value(3).toLongLong());
}

/// All readings of a day file, each as "curve time".
QSet<QString> storedReadings(const QString& path)
{
    QSet<QString> readings;
    const QStringList tables = dayfile::rows(
        path, one("SELECT name FROM sqlite_master WHERE type = 'table' AND name LIKE '%batch_2%'"));
    for (const QString& table : tables) {
        const QStringList rows = dayfile::rows(
            path, QStringLiteral("SELECT curve_id || ' ' || timestamp FROM %1").arg(table));
        for (const QString& row : rows) {
            readings.insert(row);
        }
    }
    return readings;
}

/// A curve whose last reading and whose extremes are not of the same commit; empty if there is none.
QString readingApartFromItsExtremes(const QString& path)
{
    QMap<QString, QString> lastTimes;
    for (const QString& reading : storedReadings(path)) {
        QString& last = lastTimes[reading.section(QLatin1Char(' '), 0, 0)];
        last = std::max(last, reading.section(QLatin1Char(' '), 1));
    }
    for (auto it = lastTimes.cbegin(); it != lastTimes.cend(); ++it) {
        const QStringList saved = dayfile::rows(
            path, QStringLiteral("SELECT max_time FROM curve_metadata WHERE curve_id = %1")
                      .arg(it.key()));
        if (saved != QStringList{it.value()}) {
            return QStringLiteral("curve %1 ends at %2, its extremes at %3")
                .arg(it.key(), it.value(), saved.join(QLatin1Char(' ')));
        }
    }
    return {};
}

/// What the reader prints: of each curve the number of readings.
QString countsOf(const QSet<QString>& stored)
{
    QString counts;
    for (int curve = 1; curve <= kCurves; ++curve) {
        const QString prefix = QString::number(curve) + QLatin1Char(' ');
        const auto count =
            std::count_if(stored.cbegin(), stored.cend(),
                          [&prefix](const QString& reading) { return reading.startsWith(prefix); });
        counts += QStringLiteral("%1 %2\n").arg(curve).arg(count);
    }
    return counts;
}

} // namespace

class TestStoreKills : public QObject
{
    Q_OBJECT

private slots:
    void killedWriterLosesNothingItReported();

private:
    QString killOne(const QString& directory, qint64 start, QRandomGenerator& random);
    QString checkCopy(const QString& directory, const QStringList& keys);

    QSet<QString> m_reported;
};

/// Runs a child until a random moment. Returns what is wrong, if anything.
QString TestStoreKills::killOne(const QString& directory, qint64 start, QRandomGenerator& random)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {testprogram::runningTest(), one("--play"), one("writer"), directory,
                 QString::number(start)});
    if (!child.waitForStarted(kChildTimeoutMs)) {
        return one("the child does not start");
    }
    // Half of them die while starting, the others after their first reading.
    const bool late = random.bounded(2) == 1;
    if (late && !child.waitForReadyRead(kChildTimeoutMs)) {
        return one("no reading was stored: ") + QString::fromUtf8(child.readAllStandardError());
    }
    QByteArray output = child.readAllStandardOutput();
    const QDeadlineTimer end(random.bounded(late ? kLateKillMs : kEarlyKillMs));
    while (!end.hasExpired()) {
        child.waitForReadyRead(static_cast<int>(end.remainingTime()));
        output += child.readAllStandardOutput();
    }
    child.kill();
    if (!child.waitForFinished(kChildTimeoutMs)) {
        return one("the child does not die");
    }
    output += child.readAllStandardOutput();
    const QString errors = QString::fromUtf8(child.readAllStandardError());
    if (child.exitStatus() != QProcess::CrashExit || !errors.isEmpty()) {
        return QStringLiteral("the child ended with %1: %2").arg(child.exitCode()).arg(errors);
    }
    const QString whole = QString::fromLatin1(output.left(output.lastIndexOf('\n')));
    for (const QString& reading : whole.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        m_reported.insert(reading);
    }
    return {};
}

/// Reads copies of the files as the kill left them, so that the program itself has to recover the
/// files.
QString TestStoreKills::checkCopy(const QString& directory, const QStringList& keys)
{
    const QTemporaryDir copy;
    for (const QString& key : keys) {
        const QString name = key + one(".db");
        const QString source = directory + QLatin1Char('/') + name;
        if (!QFile::exists(source)) {
            continue;
        }
        for (const char* suffix : {"", "-wal"}) {
            QFile::copy(source + one(suffix), copy.filePath(name) + one(suffix));
        }
        const QStringList check = dayfile::rows(copy.filePath(name), one("PRAGMA integrity_check"));
        if (check != QStringList{one("ok")}) {
            return key + one(": ") + check.join(QLatin1Char(' '));
        }
        const QString apart = readingApartFromItsExtremes(copy.filePath(name));
        if (!apart.isEmpty()) {
            return key + one(": ") + apart;
        }
    }
    return {};
}

void TestStoreKills::killedWriterLosesNothingItReported()
{
    const int kills = qEnvironmentVariableIsSet("SCN_KILLS")
                          ? qEnvironmentVariableIntValue("SCN_KILLS")
                          : kKillsOfTheShortRun;
    const quint32 seed = qEnvironmentVariableIsSet("SCN_SEED")
                             ? qgetenv("SCN_SEED").toUInt()
                             : QRandomGenerator::global()->generate();
    qInfo("SCN_SEED=%u", seed);
    QRandomGenerator random(seed);
    const QTemporaryDir directory;
    const qint64 first = localTime("2026-01-12 06:00:00.000");
    qint64 edge = first;
    for (int kill = 0; kill < kills; ++kill, edge += kBatchMs) {
        const QString complaint = killOne(directory.path(), edge - kBeforeEdgeMs, random);
        QVERIFY2(complaint.isEmpty(),
                 qPrintable(QStringLiteral("kill %1: %2").arg(kill).arg(complaint)));
        const auto key = [](qint64 time) {
            return QDateTime::fromMSecsSinceEpoch(time).toString(one("yyyyMMdd"));
        };
        const QString damage = checkCopy(directory.path(), {key(edge - 1), key(edge + 1)});
        QVERIFY2(damage.isEmpty(), qPrintable(QStringLiteral("kill %1: %2").arg(kill).arg(damage)));
    }

    QProcess reader;
    reader.start(QCoreApplication::applicationFilePath(),
                 {testprogram::runningTest(), one("--play"), one("reader"), directory.path(),
                  QString::number(first - kBatchMs), QString::number(edge)});
    QVERIFY(reader.waitForFinished(kChildTimeoutMs));
    QCOMPARE(reader.exitCode(), 0);

    QSet<QString> stored;
    QString expectedWarnings;
    const QStringList files = QDir(directory.path()).entryList({one("*.db")}, QDir::Files);
    QVERIFY(files.size() >= kills / 4);
    for (const QString& file : files) {
        QCOMPARE(dayfile::rows(directory.filePath(file), one("PRAGMA integrity_check")),
                 QStringList{one("ok")});
        stored += storedReadings(directory.filePath(file));
        // A file whose creators all died before its tables existed has nothing to read.
        if (dayfile::rows(directory.filePath(file), one("SELECT 1 FROM batch_metadata"))
                .value(0)
                .startsWith(one("error"))) {
            expectedWarnings += QString(one("查询分片元数据失败: \"no such table: batch_metadata "
                                            "Unable to execute statement\"\n"))
                                    .repeated(kCurves);
        }
    }
    qInfo("%d kills, %d readings reported, %d stored, %d day files", kills, m_reported.size(),
          stored.size(), files.size());
    QVERIFY(m_reported.size() > 10 * kills);
    const QSet<QString> missing = m_reported - stored;
    QVERIFY2(missing.isEmpty(),
             qPrintable(QStringList(missing.begin(), missing.end()).join(QLatin1Char(','))));

    QCOMPARE(QString::fromUtf8(reader.readAllStandardError()), expectedWarnings);
    QCOMPARE(QString::fromLatin1(reader.readAllStandardOutput()), countsOf(stored));
}

namespace {

int runOrPlay(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--play") == 0) {
        const QCoreApplication application(argc, argv);
        return play(QCoreApplication::arguments().mid(2));
    }
    return testprogram::run<TestStoreKills, QCoreApplication>(argc, argv);
}

} // namespace

SCN_TEST_RUN(&runOrPlay)
#include "test_storekills.moc"
