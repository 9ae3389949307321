#include "dayfilewriter.h"
#include "support/postgresserver.h"
#include "support/testprogram.h"

#include <QDate>
#include <QDateTime>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <cstdio>

namespace {

constexpr int kDays = 30;
constexpr int kCurves = 60;
constexpr int kBatches = 4;

/// Writes a month of readings, each curve every `stepMs` milliseconds.
void writeMonth(const QString& directory, int stepMs)
{
    for (int day = 0; day < kDays; ++day) {
        const QDate date = QDate(2026, 1, 12).addDays(day);
        DayFileWriter file(directory + date.toString(QStringLiteral("/yyyyMMdd")) +
                           QStringLiteral(".db"));
        file.execute(QStringLiteral("PRAGMA synchronous = OFF"));
        for (int curve = 1; curve <= kCurves; ++curve) {
            file.addCurve(curve, QStringLiteral("%1(Vdc)").arg(100 * ((curve - 1) / 20 + 1) +
                                                               (curve - 1) % 20 + 1));
        }
        for (int batch = 0; batch < kBatches; ++batch) {
            const qint64 first = date.startOfDay().toMSecsSinceEpoch() + batch * kBatchMs;
            QVector<QPointF> points;
            for (qint64 time = first; time < first + kBatchMs; time += stepMs) {
                points.append({static_cast<double>(time), std::sin(static_cast<double>(time))});
            }
            for (int curve = 1; curve <= kCurves; ++curve) {
                file.addBatch(curve, first, DayFileWriter::tableName(curve, first), points);
            }
        }
    }
}

/// The most memory that a call had at once, in MB; -1 if it failed. The system's `time` measures it.
double peakOf(const QStringList& arguments)
{
    const QTemporaryDir folder;
    constexpr int kPatienceMs = 900000;
    constexpr double kKilo = 1024.0;
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(
        QStringLiteral("/usr/bin/time"),
        QStringList{QStringLiteral("-f"), QStringLiteral("%M"), QStringLiteral(SCN_STORE)} +
            arguments);
    if (!process.waitForFinished(kPatienceMs) || process.exitCode() != 0) {
        return -1;
    }
    // After what the command itself has to say.
    return process.readAllStandardError().trimmed().split('\n').constLast().toDouble() / kKilo;
}

/// Prints what a command needs for few readings and for many, and compares it.
void compare(const QStringList& call, const QString& few, const QString& many, double mostMb)
{
    constexpr double kMoreMb = 10;
    QElapsedTimer timer;
    const double ofFew = peakOf(call + QStringList{few});
    timer.start();
    const double ofMany = peakOf(call + QStringList{many});
    const QString name = call.mid(0, 3).join(QLatin1Char(' '));
    std::printf("%-20s  648,000 readings: %5.1f MB  5,184,000 readings: %5.1f MB, %5.1f s\n",
                qPrintable(name), ofFew, ofMany, static_cast<double>(timer.elapsed()) / 1000);
    QVERIFY(ofFew > 0 && ofMany > 0);
    QVERIFY(ofMany <= ofFew + kMoreMb);
    QVERIFY(ofMany <= mostMb);
}

} // namespace

/// What the commands need for a month of 60 curves does not depend on how many readings there are.
class TestStoreMemory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void memoryDoesNotGrowWithTheReadings();
    void followerDoesNotGrowWithTheReadings();

private:
    const QTemporaryDir m_few;
    const QTemporaryDir m_many;
};

void TestStoreMemory::initTestCase()
{
    constexpr int kFewMs = 240000;
    constexpr int kManyMs = 30000;
    writeMonth(m_few.path(), kFewMs);
    writeMonth(m_many.path(), kManyMs);
}

void TestStoreMemory::memoryDoesNotGrowWithTheReadings()
{
    struct Call
    {
        QStringList arguments;
        double mostMb;
    };
    const QVector<Call> calls{
        {{QStringLiteral("list")}, 100},
        {{QStringLiteral("info")}, 100},
        {{QStringLiteral("check")}, 100},
        {{QStringLiteral("export")}, 100},
        {{QStringLiteral("export"), QStringLiteral("--long")}, 100},
        {{QStringLiteral("export"), QStringLiteral("--parts"), QStringLiteral(".")}, 100},
        {{QStringLiteral("plot"), QStringLiteral("-o"), QStringLiteral("run.png")}, 200},
        {{QStringLiteral("plot"), QStringLiteral("-o"), QStringLiteral("run.svg")}, 200},
        {{QStringLiteral("plot"), QStringLiteral("-o"), QStringLiteral("run.pdf")}, 200}};
    for (const auto& [call, mostMb] : calls) {
        compare(call, m_few.path(), m_many.path(), mostMb);
    }
}

void TestStoreMemory::followerDoesNotGrowWithTheReadings()
{
    if (PostgresServer::programDirectory().isEmpty()) {
        SCN_SKIP(QStringLiteral("PostgreSQL's server is not installed"));
    }
    constexpr double kMostMb = 100;
    const PostgresServer server;
    compare({QStringLiteral("forward"), QStringLiteral("--once"), QStringLiteral("--to"),
             server.address()},
            m_few.path(), m_many.path(), kMostMb);
}

SCN_TEST(TestStoreMemory, QCoreApplication)
#include "test_storememory.moc"
