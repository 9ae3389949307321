#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "export/batchtables.h"
#include "export/csvexportfromdbthread.h"
#include "export/curvecursor.h"
#include "exportscene.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>

using namespace scn;

namespace {

constexpr int kRows = 5000;

/// A directory with a day of two curves, and a store that only reads it.
class ReaderScene
{
public:
    ReaderScene()
    {
        DayFileWriter file(path());
        for (const int id : {1, 2}) {
            file.addCurve(id, QStringLiteral("10%1(Vdc)").arg(id));
            file.addBatch(id, kFirst, DayFileWriter::tableName(id, kFirst),
                          samplesFrom(kFirst + id, kRows));
        }
        m_store = std::make_unique<CurveDataDB>(m_directory.path(), nullptr, FileAccess::Read);
    }
    ~ReaderScene() { m_store->closeForExit(QDeadlineTimer(1000)); }
    ReaderScene(const ReaderScene&) = delete;
    ReaderScene& operator=(const ReaderScene&) = delete;

    QString path() const { return m_directory.filePath(QStringLiteral("20260308.db")); }
    CurveDataDB& store() { return *m_store; }

    const qint64 kFirst = localTime("2026-03-08 12:00:00.000");
    const qint64 kLast = kFirst + 2 * kRows * 1000;

private:
    QTemporaryDir m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};

} // namespace

/// An export of files that another process may write meanwhile.
class TestExportReader : public QObject
{
    Q_OBJECT

private slots:
    void writerWaitsForNoCursor();
    void restsChangeNothing_data();
    void restsChangeNothing();
    void deviceGetsWhatAPartWould();
};

void TestExportReader::writerWaitsForNoCursor()
{
    ReaderScene scene;
    const BatchTables tables = collectTables(scene.store(), scene.store().curveNames(),
                                             scene.kFirst, scene.kLast, std::atomic<bool>(false));
    CurveCursor cursor(scene.store(), 1, tables.byCurve.value(1), scene.kFirst, scene.kLast,
                       CurveCursor::ValuesOnly);
    const QString insert =
        QStringLiteral("INSERT INTO \"%1\" (curve_id, timestamp, value) VALUES (1, %2, 7)")
            .arg(DayFileWriter::tableName(1, scene.kFirst));
    SampleColumn column;
    for (const int step : {0, 1, 2}) {
        QCOMPARE(dayfile::execute(scene.path(), insert.arg(scene.kLast + step)), QString());
        cursor.read(column, static_cast<std::size_t>(1000 * (step + 1)));
        QVERIFY(cursor.isValid());
    }
    QCOMPARE(static_cast<int>(column.size()), 3000);
}

void TestExportReader::restsChangeNothing_data()
{
    QTest::addColumn<int>("block");

    for (const int block : {1, 7, 1000, kRows, kRows + 1}) {
        QTest::addRow("%d", block) << block;
    }
}

void TestExportReader::restsChangeNothing()
{
    QFETCH(int, block);

    ReaderScene scene;
    const BatchTables tables = collectTables(scene.store(), scene.store().curveNames(),
                                             scene.kFirst, scene.kLast, std::atomic<bool>(false));
    const LogCapture log;
    CurveCursor cursor(scene.store(), 2, tables.byCurve.value(2), scene.kFirst, scene.kLast,
                       CurveCursor::TimesAndValues);
    SampleColumn column;
    while (cursor.isValid()) {
        cursor.read(column, column.size() + static_cast<std::size_t>(block));
    }
    QVERIFY(!cursor.hasFailed());
    const QVector<QPointF> samples = samplesFrom(scene.kFirst + 2, kRows);
    QCOMPARE(static_cast<int>(column.size()), samples.size());
    for (int i = 0; i < samples.size(); ++i) {
        QCOMPARE(column[static_cast<std::size_t>(i)].timestamp,
                 static_cast<qint64>(samples.at(i).x()));
        QCOMPARE(column[static_cast<std::size_t>(i)].value, samples.at(i).y());
    }
}

void TestExportReader::deviceGetsWhatAPartWould()
{
    ReaderScene scene;
    const QTemporaryDir output;
    const QMap<QString, QString> header{{QStringLiteral("address"), QStringLiteral("A")}};
    const QString csv = output.filePath(QStringLiteral("a.csv"));
    const auto run = [&](QFileDevice* device) {
        const LogCapture log;
        CsvExportFromDBThread engine(&scene.store(), {1, 2}, csv, QStringLiteral(";"), header,
                                     scene.kFirst, scene.kLast);
        engine.setRowsPerPart(kRows + 1);
        if (device) {
            engine.setDevice(device);
        }
        QSignalSpy finished(&engine, &CsvExportFromDBThread::exportFinished);
        engine.startExport();
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
        QCOMPARE(finished.first().first().value<ExportResult>(), ExportSuccess);
    };
    run(nullptr);
    QTemporaryFile device;
    QVERIFY(device.open());
    run(&device);
    QVERIFY(device.isOpen());
    device.seek(0);
    const QMap<int, QByteArray> parts = partsIn(output.path());
    QCOMPARE(parts.size(), 1);
    QVERIFY(parts.first().count('\n') == kRows + 6);
    QVERIFY(device.readAll() == parts.first());
}

SCN_TEST(TestExportReader, QCoreApplication)
#include "test_exportreader.moc"
