#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesdata.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "teststore.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QString kVoltage = QStringLiteral("101(Vdc)");

/// Name and hash of each file, but for the indexes of WALs, which readers make.
QStringList contentsOf(const QString& directory)
{
    QStringList contents;
    for (const QString& name : QDir(directory).entryList(QDir::Files, QDir::Name)) {
        QFile file(QDir(directory).filePath(name));
        if (name.endsWith(QLatin1String("-shm")) || !file.open(QIODevice::ReadOnly)) {
            continue;
        }
        contents.append(
            name + QLatin1Char(' ') +
            QString::fromLatin1(
                QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1).toHex()));
    }
    return contents;
}

/// A store that only reads, closed at the end without a running program's waits.
class Reader
{
public:
    explicit Reader(const QString& directory)
        : m_store(directory, nullptr, scn::FileAccess::Read)
    {
    }
    ~Reader() { m_store.closeForExit(QDeadlineTimer(1000)); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    CurveDataDB* operator->() { return &m_store; }
    CurveDataDB* get() { return &m_store; }

private:
    CurveDataDB m_store;
};

} // namespace

/// A store that only reads the day files of a directory.
class TestReadOnlyStore : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readsWhatIsThere();
    void readsTheWalOfAKilledProgram();
    void idsAreThoseOfTheNewestFile();
    void seriesLoadsFromIt();
    void filesOfAnotherZoneAreFound();
    void nothingIsWritten_data();
    void nothingIsWritten();
    void closedFilesGetNoSideFiles();
    void brokenFileLeavesTheOthers();

private:
    QString path(const char* key) const
    {
        return m_directory->filePath(QString::fromLatin1(key) + QStringLiteral(".db"));
    }
    void writeDay(const char* key, int curveId, const QString& name, double value) const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

void TestReadOnlyStore::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
    setPresent(localTime("2026-03-10 12:00:00.000"));
}

void TestReadOnlyStore::cleanup()
{
    setPresent(0);
}

/// One reading at noon.
void TestReadOnlyStore::writeDay(const char* key, int curveId, const QString& name,
                                 double value) const
{
    DayFileWriter file(path(key));
    file.addCurve(curveId, name);
    const qint64 noon = QDateTime::fromString(QString::fromLatin1(key) + QStringLiteral("12"),
                                              QStringLiteral("yyyyMMddhh"))
                            .toMSecsSinceEpoch();
    file.addBatch(curveId, noon, DayFileWriter::tableName(curveId, noon),
                  {{static_cast<double>(noon), value}});
}

void TestReadOnlyStore::readsWhatIsThere()
{
    writeDay("20260308", 1, kVoltage, 1.5);
    writeDay("20260309", 1, kVoltage, 2.5);
    Reader store(m_directory->path());
    QCOMPARE(store->curveNames(), (QMap<int, QString>{{1, kVoltage}}));
    QCOMPARE(store->registerCurve(kVoltage), 1);
    const QVector<QPointF> points = store->readCurveData(1, localTime("2026-03-08 00:00:00.000"),
                                                         localTime("2026-03-10 11:00:00.000"), 0);
    QCOMPARE(points.size(), 2);
    QCOMPARE(points.at(0).y(), 1.5);
    QCOMPARE(points.at(1).y(), 2.5);
}

void TestReadOnlyStore::readsTheWalOfAKilledProgram()
{
    const QTemporaryDir running;
    const QString original = QDir(running.path()).filePath(QStringLiteral("20260309.db"));
    {
        DayFileWriter file(original);
        file.execute(QStringLiteral("PRAGMA journal_mode = WAL"));
        file.addCurve(1, kVoltage);
        const qint64 noon = localTime("2026-03-09 12:00:00.000");
        file.addBatch(1, noon, DayFileWriter::tableName(1, noon),
                      {{static_cast<double>(noon), 3.5}});
        QVERIFY(QFile::copy(original, path("20260309")));
        QVERIFY(QFile::copy(original + QStringLiteral("-wal"),
                            path("20260309") + QStringLiteral("-wal")));
    }
    const QStringList before = contentsOf(m_directory->path());
    {
        Reader store(m_directory->path());
        const QVector<QPointF> points = store->readCurveData(
            1, localTime("2026-03-09 00:00:00.000"), localTime("2026-03-09 23:00:00.000"), 0);
        QCOMPARE(points.size(), 1);
        QCOMPARE(points.at(0).y(), 3.5);
    }
    QCOMPARE(before.size(), 2);
    QCOMPARE(contentsOf(m_directory->path()), before);
}

void TestReadOnlyStore::idsAreThoseOfTheNewestFile()
{
    writeDay("20260308", 1, kVoltage, 1.5);
    writeDay("20260309", 4, kVoltage, 2.5);
    writeDay("20260307", 2, QStringLiteral("102(Vdc)"), 3.5);
    Reader store(m_directory->path());
    QCOMPARE(store->curveNames(),
             (QMap<int, QString>{{2, QStringLiteral("102(Vdc)")}, {4, kVoltage}}));
}

/// As a chart does.
void TestReadOnlyStore::seriesLoadsFromIt()
{
    writeDay("20260308", 1, kVoltage, 1.5);
    Reader store(m_directory->path());
    CurveSeriesData series(kVoltage, store.get());
    series.loadWindow(localTime("2026-03-08 00:00:00.000"), localTime("2026-03-08 23:00:00.000"),
                      10000, 0.0);
    QCOMPARE(static_cast<int>(series.size()), 1);
    QCOMPARE(series.sample(0).y(), 1.5);
}

/// Written where it is still the day before.
void TestReadOnlyStore::filesOfAnotherZoneAreFound()
{
    const qint64 time = QDateTime(QDate(2026, 3, 9), QTime(3, 0), Qt::UTC).toMSecsSinceEpoch();
    {
        const ZoneGuard there("America/Lima");
        DayFileWriter file(path("20260308"));
        file.addCurve(1, kVoltage);
        file.addBatch(1, time, DayFileWriter::tableName(1, time),
                      {{static_cast<double>(time), 1.5}});
    }
    for (const char* zone : {"Asia/Tokyo", "UTC", "America/Lima", "Pacific/Honolulu"}) {
        const ZoneGuard here(zone);
        Reader store(m_directory->path());
        const QVector<QPointF> points = store->readCurveData(1, time - kHourMs, time + kHourMs, 0);
        QCOMPARE(points.size(), 1);
    }
}

void TestReadOnlyStore::nothingIsWritten_data()
{
    QTest::addColumn<QByteArray>("day");

    QTest::newRow("past day") << QByteArray("20260308");
    QTest::newRow("today") << QByteArray("20260310");
}

void TestReadOnlyStore::nothingIsWritten()
{
    QFETCH(QByteArray, day);

    writeDay(day.constData(), 1, kVoltage, 1.5);
    const QStringList before = contentsOf(m_directory->path());
    {
        const LogCapture log;
        Reader store(m_directory->path());
        QCOMPARE(store->registerCurve(QStringLiteral("102(Vdc)")), -1);
        for (const char* time : {"2026-03-08 13:00:00.000", "2026-03-10 11:00:00.000"}) {
            store->appendPoint(1, localTime(time), 9.0);
            store->appendPoints(1, {{static_cast<double>(localTime(time)), 9.0}});
        }
        QVERIFY(!store->deleteCurveData(1));
        QVERIFY(!store->saveMetadata());
        store->flushAndDetach();
        store->clearAll();
        QTest::qWait(1500);
    }
    QCOMPARE(contentsOf(m_directory->path()), before);
    QCOMPARE(before.size(), 1);
}

void TestReadOnlyStore::closedFilesGetNoSideFiles()
{
    writeDay("20260308", 1, kVoltage, 1.5);
    {
        Reader store(m_directory->path());
        QCOMPARE(store->curveNames().size(), 1);
        QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files).size(), 1);
    }
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files).size(), 1);
}

void TestReadOnlyStore::brokenFileLeavesTheOthers()
{
    writeDay("20260308", 1, kVoltage, 1.5);
    QFile broken(path("20260309"));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write(
        "no database, but as long as the header of one would have to be: 100 bytes of text, "
        "and some more for good measure");
    broken.close();
    const LogCapture log;
    Reader store(m_directory->path());
    QCOMPARE(store->curveNames(), (QMap<int, QString>{{1, kVoltage}}));
}

SCN_TEST(TestReadOnlyStore, QCoreApplication)
#include "test_readonlystore.moc"
