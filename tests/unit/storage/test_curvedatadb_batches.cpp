#include "dayfilewriter.h"
#include "readscene.h"
#include "storage/curvedatadb.h"
#include "support/exactpoints.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

// How a file's batches are found.

class TestCurveDataDBBatches : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { m_scene.letGo(); }

    void batchesAreFoundByOverlap_data();
    void batchesAreFoundByOverlap();
    void closedConnectionHasNoBatches();
    void fileWithoutCatalogueHasNoBatches();
    void pingTellsAnOpenConnection();
    void batchesOfAFileAreListed();
    void missingFileListsNothingWithoutAWord();
    void unopenableFileListsNothing();
    void loadingBatchesHoldsPointsBack();

private:
    QString pathOf(const QString& day) const { return m_scene.pathOf(day); }
    QVector<QPointF> read(int curveId, qint64 start, qint64 end)
    {
        return m_scene.store().readCurveData(curveId, start, end, 0);
    }

    ReadScene m_scene;
};

void TestCurveDataDBBatches::batchesAreFoundByOverlap_data()
{
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::addColumn<QVector<int>>("found");
    // Three batches of six hours; times count from the start of the first one.
    QTest::newRow("ends a millisecond before") << qint64(-5) << qint64(-1) << QVector<int>{};
    QTest::newRow("ends with the first") << qint64(-5) << qint64(0) << QVector<int>{0};
    QTest::newRow("inside the second") << kBatchMs + 1 << 2 * kBatchMs - 2 << QVector<int>{1};
    QTest::newRow("the second exactly") << kBatchMs << 2 * kBatchMs - 1 << QVector<int>{1};
    QTest::newRow("a millisecond on either side")
        << kBatchMs - 1 << 2 * kBatchMs << QVector<int>{0, 1, 2};
    QTest::newRow("over all") << qint64(-1) << 4 * kBatchMs << QVector<int>{0, 1, 2};
    QTest::newRow("last millisecond") << 3 * kBatchMs - 1 << 4 * kBatchMs << QVector<int>{2};
    QTest::newRow("past the last") << 3 * kBatchMs << 4 * kBatchMs << QVector<int>{};
    QTest::newRow("start after end") << 2 * kBatchMs << kBatchMs - 1 << QVector<int>{0, 1, 2};
}

void TestCurveDataDBBatches::batchesAreFoundByOverlap()
{
    QFETCH(qint64, start);
    QFETCH(qint64, end);
    QFETCH(QVector<int>, found);
    const qint64 first = localTime("2026-01-05 00:00:00.000");
    const QString path = pathOf(QStringLiteral("20260105"));
    if (!QFileInfo::exists(path)) {
        DayFileWriter file(path);
        file.addCurve(1, curveName(1));
        for (int batch = 0; batch < 3; ++batch) {
            const qint64 batchStart = first + batch * kBatchMs;
            file.addBatchRow(1, batchStart, DayFileWriter::tableName(1, batchStart));
        }
    }
    const LogCapture log;
    const auto batches =
        m_scene.store().queryBatches(1, first + start, first + end, m_scene.store().openDb(path));
    QCOMPARE(batches.size(), found.size());
    for (int i = 0; i < found.size(); ++i) {
        const qint64 batchStart = first + found.at(i) * kBatchMs;
        QCOMPARE(batches.at(i).batchStart, batchStart);
        QCOMPARE(batches.at(i).batchEnd, batchStart + kBatchMs - 1);
        QCOMPARE(batches.at(i).tableName, DayFileWriter::tableName(1, batchStart));
    }
    QCOMPARE(log.lines(QtWarningMsg), QStringList());
}

void TestCurveDataDBBatches::closedConnectionHasNoBatches()
{
    const QString name = QStringLiteral("closed");
    {
        const auto closed = QSharedPointer<QSqlDatabase>::create(
            QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name));
        const LogCapture log;
        bool failed = false;
        QVERIFY(m_scene.store().queryBatches(1, 0, 10, closed, &failed).isEmpty());
        QVERIFY(failed);
        QVERIFY(m_scene.store().queryBatches(1, 0, 10, {}).isEmpty());
        const QString line = QStringLiteral("warning: 外部数据库连接无效");
        QCOMPARE(log.lines(), (QStringList{line, line}));
    }
    QSqlDatabase::removeDatabase(name);
}

void TestCurveDataDBBatches::fileWithoutCatalogueHasNoBatches()
{
    const qint64 start = localTime("2026-01-28 00:00:00.000");
    {
        DayFileWriter file(pathOf(QStringLiteral("20260128")));
        file.execute(QStringLiteral("DROP TABLE batch_metadata"));
    }
    const LogCapture log;
    QVERIFY(read(1, start, start + 1000).isEmpty());
    QCOMPARE(log.lines().size(), 2);
    QVERIFY2(log.lines().at(0).startsWith(
                 QStringLiteral("warning: 查询分片元数据失败: \"no such table: batch_metadata")),
             qPrintable(log.lines().at(0)));
    QCOMPARE(log.lines().at(1), QStringLiteral("debug: 在数据库 \"%1\" 中未找到匹配的分片")
                                    .arg(pathOf(QStringLiteral("20260128"))));
    // It contains nothing unreadable.
    bool failed = false;
    const auto db = m_scene.store().openDb(pathOf(QStringLiteral("20260128")));
    QVERIFY(m_scene.store().queryBatches(1, start, start + 1000, db, &failed).isEmpty());
    QVERIFY(!failed);
}

void TestCurveDataDBBatches::pingTellsAnOpenConnection()
{
    QVERIFY(!m_scene.store().pingConnection({}));
    const QString name = QStringLiteral("pinged");
    {
        auto connection = QSharedPointer<QSqlDatabase>::create(
            QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name));
        connection->setDatabaseName(QStringLiteral(":memory:"));
        QVERIFY(!m_scene.store().pingConnection(connection));
        QVERIFY(connection->open());
        QVERIFY(m_scene.store().pingConnection(connection));
        connection->close();
        QVERIFY(!m_scene.store().pingConnection(connection));
    }
    QSqlDatabase::removeDatabase(name);
}

void TestCurveDataDBBatches::batchesOfAFileAreListed()
{
    const qint64 start = localTime("2026-01-29 06:00:00.000");
    {
        DayFileWriter file(pathOf(QStringLiteral("20260129")));
        file.addCurve(1, curveName(1));
        file.addBatchRow(1, start, DayFileWriter::tableName(1, start));
    }
    const LogCapture log;
    const auto batches =
        m_scene.store().listBatchesInFile(1, start, start, pathOf(QStringLiteral("20260129")));
    QCOMPARE(batches.size(), 1);
    QCOMPARE(batches.at(0).batchStart, start);
    QCOMPARE(batches.at(0).batchEnd, start + kBatchMs - 1);
    QCOMPARE(batches.at(0).tableName, DayFileWriter::tableName(1, start));
    QVERIFY(m_scene.store()
                .listBatchesInFile(2, start, start, pathOf(QStringLiteral("20260129")))
                .isEmpty());
    QCOMPARE(log.lines(), QStringList());
}

void TestCurveDataDBBatches::missingFileListsNothingWithoutAWord()
{
    const LogCapture log;
    const QString path = pathOf(QStringLiteral("20200101"));
    QVERIFY(m_scene.store().listBatchesInFile(1, 0, 10, path).isEmpty());
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(!QFileInfo::exists(path));
}

void TestCurveDataDBBatches::unopenableFileListsNothing()
{
    const QString path = pathOf(QStringLiteral("20260130"));
    QVERIFY(QDir().mkdir(path));
    const LogCapture log;
    QVERIFY(m_scene.store().listBatchesInFile(1, 0, 10, path).isEmpty());
    QCOMPARE(log.lines(QtWarningMsg),
             QStringList{QStringLiteral("数据库连接无效: \"%1\"").arg(path)});
}

void TestCurveDataDBBatches::loadingBatchesHoldsPointsBack()
{
    const QTemporaryDir directory;
    const qint64 start = localTime("2026-03-05 06:00:00.000");
    {
        DayFileWriter file(directory.filePath(QStringLiteral("20260305.db")));
        file.addCurve(1, curveName(1));
        file.addBatch(1, start, DayFileWriter::tableName(1, start), ramp(start, 5, 1000));
        file.addBatchRow(1, start + kBatchMs, DayFileWriter::tableName(1, start + kBatchMs));
        file.addBatchRow(1, start - kBatchMs, DayFileWriter::tableName(1, start - kBatchMs));
    }
    CurveDataDB store(directory.path());
    QCOMPARE(store.knownTableCount(), 0);
    store.loadBatchesForCurve(1, start, start + kBatchMs);
    QCOMPARE(store.knownTableCount(), 2);

    store.appendPoints(1, ramp(start + 10000, 5, 1000));
    store.flushPending();
    COMPARE_EXACTLY(store.readCurveData(1, start, start + kHourMs, 0), ramp(start, 5, 1000));
    // Single points are still written.
    store.appendPoint(1, start + 20000, 8.0);
    COMPARE_EXACTLY(store.readCurveData(1, start, start + kHourMs, 0),
                    ramp(start, 5, 1000) << QPointF(double(start + 20000), 8.0));
}

SCN_TEST(TestCurveDataDBBatches, QCoreApplication)
#include "test_curvedatadb_batches.moc"
