#include "forwardtest.h"

#include "followerprocess.h"
#include "readingsets.h"
#include "support/testprogram.h"

#include <QDir>
#include <QTest>

QVector<QPointF> points(int count, double firstValue, qint64 start)
{
    QVector<QPointF> result;
    for (int i = 0; i < count; ++i) {
        result.append({static_cast<double>(start + i * 100), firstValue + i * 0.1});
    }
    return result;
}

QString table(int curve)
{
    return DayFileWriter::tableName(curve, localTime(kMorning));
}

QString insertion(int curve, qint64 time, const QString& value)
{
    return QStringLiteral(
               "INSERT OR IGNORE INTO %1 (curve_id, timestamp, value) VALUES (%2, %3, %4)")
        .arg(table(curve))
        .arg(curve)
        .arg(time)
        .arg(value);
}

void ForwardTest::initTestCase()
{
    if (PostgresServer::programDirectory().isEmpty()) {
        SCN_SKIP(QStringLiteral("PostgreSQL's server is not installed"));
    }
    m_server = std::make_unique<PostgresServer>();
    QCOMPARE(m_server->psql(QStringLiteral("SELECT 1")), QStringLiteral("1"));
}

void ForwardTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    QCOMPARE(m_server->psql(QStringLiteral("DROP TABLE IF EXISTS reading, reading_place")),
             QString());
}

void ForwardTest::cleanupTestCase()
{
    m_server.reset();
}

QString ForwardTest::file(const QString& instrument, const QString& name)
{
    const QDir directory(m_directory->filePath(instrument + QStringLiteral("_Data")));
    directory.mkpath(QStringLiteral("."));
    return directory.filePath(name);
}

std::unique_ptr<DayFileWriter> ForwardTest::writer(const QString& path, int curves)
{
    auto file = std::make_unique<DayFileWriter>(path);
    file->execute(QStringLiteral("PRAGMA journal_mode = WAL"));
    for (int curve = 1; curve <= curves; ++curve) {
        file->addCurve(curve, QStringLiteral("10%1(Ω)").arg(curve));
        file->addBatch(curve, localTime(kMorning), table(curve),
                       points(10, curve, localTime(kMorning)));
    }
    return file;
}

int ForwardTest::once(const QString& directory)
{
    FollowerProcess follower({directory.isEmpty() ? m_directory->path() : directory,
                              QStringLiteral("--to"), m_server->address(),
                              QStringLiteral("--once")});
    const int code = follower.exitCode();
    m_errors = follower.errors();
    return code;
}

bool ForwardTest::isForwarded(const QStringList& expected)
{
    return QTest::qWaitFor([&] { return readingsets::inDatabase(*m_server) == expected; },
                           kForwardPatienceMs);
}
