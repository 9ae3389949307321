#include "acquisition/readdata.h"
#include "app/inputreaderthread.h"
#include "app/mainwidget.h"
#include "app/windowtiming.h"
#include "common/helperthreads.h"
#include "exportbench.h"
#include "exportdialoghand.h"
#include "lockwaits.h"
#include "overlay/loadingview.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/storewaits.h"
#include "support/daytables.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "userhand.h"
#include "widgets/customcombobox.h"
#include "widgets/customdialog.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScreen>
#include <QSemaphore>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

using userhand::click;
using userhand::enterText;
using userhand::press;

using namespace std::chrono_literals;

namespace {

/// Rows of a curve of which much is left when the shorter one has been read.
constexpr int kLongScan = 3000;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A file's name without the part number and the time.
QString base(const QString& name)
{
    QString text = name;
    return text.remove(QRegularExpression(QStringLiteral("_1_\\d{14}\\.csv$")));
}

/// Holds an export in the middle of its read while it lives: where the second curve is read to its
/// end, and the first is not. The scan's first curve becomes longer for it.
class HeldExport
{
public:
    explicit HeldExport(const ExportBench& bench)
    {
        CurveDataDB* const store = CurveDataDB::instance(QString());
        const QList<int> ids = store->curveNames().keys();
        QVector<QPointF> points;
        for (int row = kLongScan / 2; row < kLongScan; ++row) {
            points.append({double(bench.timeOf(row).toMSecsSinceEpoch()), double(row)});
        }
        store->appendPoints(ids.constFirst(), points);
        store->flushPending();
        g_scanEndText = bench.timeOf(kLongScan).toString(QStringLiteral("yyyy MM dd hh mm ss"));
        const QString end = QStringLiteral("曲线 %1 所有分片表已处理完毕").arg(ids.constLast());
        m_log.whenLogged(end, [this] {
            m_reached.release();
            m_open.acquire();
        });
    }
    ~HeldExport() { goOn(); }
    HeldExport(const HeldExport&) = delete;
    HeldExport& operator=(const HeldExport&) = delete;

    bool isReached() const { return m_reached.available() > 0; }

    void goOn() { m_open.release(); }

private:
    LogCapture m_log;
    QSemaphore m_reached;
    QSemaphore m_open;
};

/// Whether the overlay was still there when the message came.
class MessageWatch : public QObject
{
public:
    explicit MessageWatch(ExportBench& bench)
        : m_bench(bench)
    {
        bench.messageDialog()->installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            ++shows;
            wasCovered = m_bench.exportView()->isVisible();
        }
        return false;
    }
    int shows = 0;
    bool wasCovered = true;

private:
    ExportBench& m_bench;
};

/// Locks a file of the store against all other readers.
class LockedDayFile
{
public:
    explicit LockedDayFile(const QString& path)
    {
        QSqlDatabase database =
            QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("locked"));
        database.setDatabaseName(path);
        QVERIFY(database.open());
        QSqlQuery query(database);
        for (const QString& statement : daytables::baseStatements()) {
            QVERIFY(query.exec(statement));
        }
        QVERIFY(query.exec(QStringLiteral("BEGIN EXCLUSIVE")));
    }
    ~LockedDayFile() { QSqlDatabase::removeDatabase(QStringLiteral("locked")); }
    LockedDayFile(const LockedDayFile&) = delete;
    LockedDayFile& operator=(const LockedDayFile&) = delete;
};

} // namespace

/// The exports that the dialog starts, and what is told of them. Each test runs in a process of its
/// own, since each needs its own store.
class TestExportRun : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { ExportBench::wearTheProgramsStyle(); }
    void init() { ExportBench::removeLeftovers(); }
    void cleanup();

    void withoutAStoreThereIsAMessageAndNoFile();
    void withoutCurvesThereIsAMessageAndNoFile();
    void fileHoldsTheScan_data();
    void fileHoldsTheScan();
    void readingsAfterTheClickOnStopStayOut();
    void fileIsNamedAfterSerialAndName_data();
    void fileIsNamedAfterSerialAndName();
    void anyDirectoryWillDo_data();
    void anyDirectoryWillDo();
    void outcomeIsToldAfterTheOverlay_data();
    void outcomeIsToldAfterTheOverlay();
    void storeThatGoesMeanwhileIsAnError_data();
    void storeThatGoesMeanwhileIsAnError();
    void outcomeFitsTheScreen();
    void secondExportCannotBeStartedByKeys();
    void exportsFollowOneAnother();
    void endOfTheWindowEndsAnExport();
    void endOfTheWindowWaitsForALockOnce();
    void exitLeavesTheDialog_data();
    void exitLeavesTheDialog();
};

void TestExportRun::cleanup()
{
    ExportBench::closeStore();
    ExportBench::removeLeftovers();
}

void TestExportRun::withoutAStoreThereIsAMessageAndNoFile()
{
    ExportBench bench;
    bench.inDialog([&bench](const ExportDialogHand& dialog) {
        click(dialog.toFile());
        QCOMPARE(bench.message(), QStringLiteral("没有相关轨迹数据"));
        QVERIFY(bench.isInformation());
        QVERIFY(dialog.window->isVisible());
    });
    QVERIFY(!bench.exportView());
    QCOMPARE(ExportBench::filesBesideTheProgram(), QStringList());
}

void TestExportRun::withoutCurvesThereIsAMessageAndNoFile()
{
    ExportBench bench;
    bench.scan();
    CurveDataDB* const store = CurveDataDB::instance(QString());
    // The window would begin a new scan.
    disconnect(store, nullptr, &bench.window(), nullptr);
    const QSignalSpy cleared(store, &CurveDataDB::sigClearFinished);
    store->clearAll();
    QTRY_COMPARE_WITH_TIMEOUT(cleared.count(), 1, ExportBench::kEndWaitMs);
    QVERIFY(store->curveNames().isEmpty());
    bench.inDialog([&bench](const ExportDialogHand& dialog) {
        click(dialog.toFile());
        QCOMPARE(bench.message(), QStringLiteral("没有相关轨迹数据"));
        QVERIFY(bench.isInformation());
    });
    QVERIFY(!bench.exportView());
    QCOMPARE(ExportBench::filesBesideTheProgram(), QStringList());
}

void TestExportRun::fileHoldsTheScan_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("separator");
    QTest::newRow("comma") << 0 << QStringLiteral(",");
    QTest::newRow("semicolon") << 1 << QStringLiteral(";");
    QTest::newRow("tab") << 2 << QStringLiteral("\t");
}

void TestExportRun::fileHoldsTheScan()
{
    QFETCH(int, row);
    QFETCH(QString, separator);
    ExportBench bench;
    bench.scan();
    bench.inDialog([row](const ExportDialogHand& dialog) {
        dialog.separator()->setFocus(Qt::TabFocusReason);
        for (int step = 0; step < row; ++step) {
            press(dialog.window, Qt::Key_Down);
        }
        click(dialog.toFile());
        QVERIFY(!dialog.window->isVisible());
    });
    bench.waitForEnd();
    const QStringList names = ExportBench::filesBesideTheProgram();
    QCOMPARE(names.size(), 1);
    const QString path = QDir(QCoreApplication::applicationDirPath()).filePath(names.constFirst());
    QCOMPARE(base(names.constFirst()), ExportBench::serial() + QStringLiteral("_Trace"));
    QCOMPARE(withoutStamps(bench.outcome()), QStringLiteral("导出成功") + withoutStamps(path));
    QCOMPARE(contentOf(path), bench.csv(separator));
}

/// The drained readings are in the store, after the second of the click.
void TestExportRun::readingsAfterTheClickOnStopStayOut()
{
    const QString format = QStringLiteral("yyyy MM dd hh mm ss");
    ExportBench bench;
    click(bench.startButton());
    QTRY_VERIFY_WITH_TIMEOUT(g_scanRunning, ExportBench::kEndWaitMs);
    click(bench.startButton());
    QVERIFY(QDateTime::fromString(g_scanEndText, format).isValid());
    // The run began ten seconds ago and was stopped five seconds ago.
    const QDateTime now = QDateTime::currentDateTime();
    g_scanStartText = now.addSecs(-10).toString(format);
    const QString noted = now.addSecs(-5).toString(format);
    g_scanEndText = noted;
    g_scanRunning = false;
    const QSignalSpy stops(ReadData::instance(), &ReadData::sigStopScan);
    emit ReadData::instance()->sigStopScan();
    QTRY_COMPARE(stops.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(g_scanEndText, noted);

    const qint64 start = QDateTime::fromString(g_scanStartText, format).toMSecsSinceEpoch();
    const qint64 end = QDateTime::fromString(noted, format).toMSecsSinceEpoch();
    QVERIFY(start > 0 && end > start);
    CurveDataDB* const store = CurveDataDB::instance(QString());
    QVector<QPointF> points;
    for (const qint64 time : {start - 1, start, end - 1, end, end + 1, end + 1000, end + 2000}) {
        points.append({double(time), double(time - end)});
    }
    store->appendPoints(store->curveNames().firstKey(), points);
    store->flushPending();

    const QTemporaryDir directory;
    bench.exportTo(directory.path());
    const QStringList files = csvFiles(directory.path());
    QCOMPARE(files.size(), 1);
    QList<QByteArray> rows = contentOf(directory.filePath(files.constFirst())).split('\n');
    rows = rows.mid(6); // below the titles
    QVector<double> values;
    for (const QByteArray& row : qAsConst(rows)) {
        if (!row.isEmpty()) {
            values.append(row.split(',').value(2).toDouble());
        }
    }
    QCOMPARE(values, (QVector<double>{double(start - end), -1.0, 0.0}));
}

void TestExportRun::fileIsNamedAfterSerialAndName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("written");
    QTest::newRow("empty") << QString() << QStringLiteral("顺序对齐曲线数据");
    QTest::newRow("reserved") << QStringLiteral("a/b\\c:d*e?f\"g<h>i|j")
                              << QStringLiteral("a_b_c_d_e_f_g_h_i_j");
    QTest::newRow("markers") << QStringLiteral("%1 %2") << QStringLiteral("%1 %2");
    QTest::newRow("upwards") << QStringLiteral("../../x") << QStringLiteral(".._.._x");
}

void TestExportRun::fileIsNamedAfterSerialAndName()
{
    QFETCH(QString, name);
    QFETCH(QString, written);
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    bench.exportTo(directory.path(), name);
    const QStringList names = QDir(directory.path()).entryList(QDir::Files);
    QCOMPARE(names.size(), 1);
    QCOMPARE(base(names.constFirst()), ExportBench::serial() + QLatin1Char('_') + written);
}

void TestExportRun::anyDirectoryWillDo_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<bool>("vanishes");
    QTest::newRow("blanks") << QStringLiteral("/a b/ c") << false;
    QTest::newRow("markers") << QStringLiteral("/%1/%2") << false;
    QTest::newRow("Chinese") << QStringLiteral("/数据/目录") << false;
    QTest::newRow("separator") << QStringLiteral("/a/") << false;
    QTest::newRow("long") << QString(QLatin1Char('/') + QString(148, QLatin1Char('w'))).repeated(2)
                          << false;
    // It is created again.
    QTest::newRow("vanished") << QStringLiteral("/a/b") << true;
}

void TestExportRun::anyDirectoryWillDo()
{
    QFETCH(QString, directory);
    QFETCH(bool, vanishes);
    ExportBench bench;
    bench.scan();
    const QTemporaryDir root;
    const QString path = root.path() + directory;
    QVERIFY(QDir().mkpath(path));
    bench.inDialog([&](const ExportDialogHand& dialog) {
        dialog.chooseDirectory(path);
        if (vanishes) {
            QVERIFY(QDir().rmdir(path));
        }
        click(dialog.toFile());
    });
    bench.waitForEnd();
    QCOMPARE(csvFiles(path).size(), 1);
    const QString file = QDir(path).filePath(csvFiles(path).constFirst());
    QCOMPARE(withoutStamps(bench.outcome()),
             QStringLiteral("导出成功") + withoutStamps(QDir::cleanPath(file)));
    QCOMPARE(contentOf(file), bench.csv(QStringLiteral(",")));
}

void TestExportRun::outcomeIsToldAfterTheOverlay_data()
{
    QTest::addColumn<QString>("cause");
    QTest::addColumn<QString>("text");
    QTest::newRow("success") << QString() << QStringLiteral("导出成功");
    QTest::newRow("name") << QStringLiteral("name")
                          << QStringLiteral("CSV文件无法打开（可能被占用）");
    QTest::newRow("blocked") << QStringLiteral("blocked")
                             << QStringLiteral("CSV文件无法打开（可能被占用）");
    QTest::newRow("texts") << QStringLiteral("texts") << QStringLiteral("没有可以保存的数据");
}

void TestExportRun::outcomeIsToldAfterTheOverlay()
{
    QFETCH(QString, cause);
    QFETCH(QString, text);
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("target"));
    QVERIFY(QDir().mkpath(path));
    if (cause == QLatin1String("texts")) {
        g_scanStartText.clear();
        g_scanEndText.clear();
    }
    MessageWatch watch(bench);
    bench.inDialog([&](const ExportDialogHand& dialog) {
        dialog.chooseDirectory(path);
        if (cause == QLatin1String("name")) {
            enterText(dialog.name(), QString(300, QLatin1Char('n')));
        }
        if (cause == QLatin1String("blocked")) {
            // A file stands where the directory was.
            QVERIFY(QDir().rmdir(path));
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        // Sent to the button only: nothing else happens until the overlay has been checked.
        QTest::mouseClick(dialog.toFile(), Qt::LeftButton);
        QVERIFY(!dialog.window->isVisible());
        QVERIFY(bench.exportView()->isVisible());
        QCOMPARE(bench.exportView()->geometry(), bench.window().rect());
        QCOMPARE(watch.shows, 0);
    });
    bench.waitForEnd();
    QCOMPARE(watch.shows, 1);
    QVERIFY(!watch.wasCovered);
    QVERIFY(bench.isInformation());
    const QStringList left = QDir(path).entryList(QDir::Files);
    if (!cause.isEmpty()) {
        QCOMPARE(bench.outcome(), text);
        QCOMPARE(left, QStringList());
    } else {
        QCOMPARE(left.size(), 1);
        QCOMPARE(withoutStamps(bench.outcome()),
                 text + withoutStamps(QDir(path).filePath(left.constFirst())));
    }
}

void TestExportRun::storeThatGoesMeanwhileIsAnError_data()
{
    QTest::addColumn<QString>("cause");
    for (const char* cause : {"files", "clear"}) {
        QTest::newRow(cause) << QString::fromLatin1(cause);
    }
}

void TestExportRun::storeThatGoesMeanwhileIsAnError()
{
    QFETCH(QString, cause);
    ExportBench bench;
    bench.scan();
    CurveDataDB* const store = CurveDataDB::instance(QString());
    // The window would begin a new scan after a clear.
    disconnect(store, nullptr, &bench.window(), nullptr);
    const QSignalSpy cleared(store, &CurveDataDB::sigClearFinished);
    const QTemporaryDir directory;
    HeldExport held(bench);
    bench.startExport(directory.path());
    QTRY_VERIFY_WITH_TIMEOUT(held.isReached(), ExportBench::kEndWaitMs);
    QCOMPARE(csvFiles(directory.path()).size(), 1);
    if (cause == QLatin1String("clear")) {
        store->clearAll();
    } else {
        // The readings may be in the files of two days.
        const QDir data(store->dataDirectory());
        const QStringList names = data.entryList({QStringLiteral("*.db")}, QDir::Files);
        QVERIFY(!names.isEmpty());
        for (const QString& name : names) {
            QVERIFY(QFile::remove(data.filePath(name)));
        }
    }
    held.goOn();
    bench.waitForEnd();
    QCOMPARE(bench.outcome(), QStringLiteral("数据库读取失败，请检查数据文件"));
    QVERIFY(bench.isInformation());
    QCOMPARE(csvFiles(directory.path()), QStringList());
    if (cause == QLatin1String("clear")) {
        QTRY_COMPARE_WITH_TIMEOUT(cleared.count(), 1, ExportBench::kEndWaitMs);
    }
    // The button works again.
    bench.inDialog([](const ExportDialogHand& dialog) { QVERIFY(dialog.window->isVisible()); });
}

void TestExportRun::outcomeFitsTheScreen()
{
    ExportBench bench;
    bench.scan();
    const QTemporaryDir root;
    const QString path =
        root.path() + QString(QLatin1Char('/') + QString(140, QLatin1Char('w'))).repeated(6);
    QVERIFY(QDir().mkpath(path));
    bench.exportTo(path);
    QCOMPARE(csvFiles(path).size(), 1);
    QVERIFY(bench.outcome().contains(path));
    const QSize screen = QApplication::primaryScreen()->availableSize();
    QVERIFY(bench.messageDialog()->width() <= screen.width());
    QVERIFY(bench.messageDialog()->height() <= screen.height());
    // Several lines of it.
    QVERIFY(bench.messageDialog()->height() > 4 * bench.messageDialog()->fontMetrics().height());
}

void TestExportRun::secondExportCannotBeStartedByKeys()
{
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    HeldExport held(bench);
    bench.startExport(directory.path());
    QTRY_VERIFY_WITH_TIMEOUT(held.isReached(), ExportBench::kEndWaitMs);
    QVERIFY(bench.exportView()->isVisible());
    auto* dialog = bench.window().findChild<CustomDialog*>();
    // An open dialog would keep the test in its loop.
    bool hasOpened = false;
    QTimer::singleShot(0, dialog, [&] {
        hasOpened = dialog->isVisible();
        dialog->close();
    });
    QTest::keyClick(bench.exportButton(), Qt::Key_Space);
    QTest::mouseClick(ExportDialogHand(dialog).toFile(), Qt::LeftButton);
    held.goOn();
    bench.waitForEnd();
    QVERIFY(!hasOpened);
    QCOMPARE(csvFiles(directory.path()).size(), 1);
}

void TestExportRun::exportsFollowOneAnother()
{
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    bench.exportTo(directory.path(), QStringLiteral("one"));
    const LoadingView* overlay = bench.exportView();
    bench.exportTo(directory.path(), QStringLiteral("two"));
    QCOMPARE(csvFiles(directory.path()).size(), 2);
    QCOMPARE(bench.exportView(), overlay);
}

void TestExportRun::endOfTheWindowEndsAnExport()
{
    ExportBench bench;
    bench.scan();
    const QTemporaryDir directory;
    HeldExport held(bench);
    bench.startExport(directory.path());
    QTRY_VERIFY_WITH_TIMEOUT(held.isReached(), ExportBench::kEndWaitMs);
    QVERIFY(bench.exportView()->isVisible());
    WindowBench::endAcquisition();
    // The export is asked to stop before the reader of the launcher's lines ends.
    connect(
        bench.window().findChild<InputReaderThread*>(), &QThread::finished,
        bench.window().findChild<InputReaderThread*>(), [&held] { held.goOn(); },
        Qt::DirectConnection);
    bench.close();
    QCOMPARE(csvFiles(directory.path()), QStringList());
    QCoreApplication::processEvents();
}

/// Someone else holds the file of the day before.
void TestExportRun::endOfTheWindowWaitsForALockOnce()
{
    LockWaits waits;
    ExportBench bench;
    bench.scan();
    const QDateTime yesterday = bench.start.addDays(-1);
    const CurveDataDB* const store = CurveDataDB::instance(QString());
    const LockedDayFile file(store->dbPathForTime(yesterday.toMSecsSinceEpoch()));
    g_scanStartText = yesterday.toString(QStringLiteral("yyyy MM dd hh mm ss"));
    const QTemporaryDir directory;
    QSemaphore waiting;
    QSemaphore goesOn;
    waits.forget();
    waits.after(1s, [&waiting, &goesOn] {
        waiting.release();
        goesOn.tryAcquire(1, ExportBench::kEndWaitMs);
    });
    bench.startExport(directory.path());
    QTRY_COMPARE_WITH_TIMEOUT(waiting.available(), 1, ExportBench::kEndWaitMs);
    QVERIFY(bench.exportView()->isVisible());
    WindowBench::endAcquisition();
    // The export is asked to stop before the reader of the launcher's lines ends.
    connect(
        bench.window().findChild<InputReaderThread*>(), &QThread::finished,
        bench.window().findChild<InputReaderThread*>(), [&goesOn] { goesOn.release(); },
        Qt::DirectConnection);
    bench.close();
    QCOMPARE(waits.total(), scn::storewaits::kLockPatience);
    // The window's end has the time for one wait.
    const scn::WindowTiming timing;
    QVERIFY(scn::storewaits::kLockPatience < timing.threadEnd.stop + timing.threadEnd.termination);
    QVERIFY(scn::helperthreads::waitForAll(0ms)); // the export has not been left to itself
    QCOMPARE(csvFiles(directory.path()), QStringList());
}

void TestExportRun::exitLeavesTheDialog_data()
{
    QTest::addColumn<bool>("byLauncher");
    QTest::newRow("exit") << true;
    QTest::newRow("close") << false;
}

void TestExportRun::exitLeavesTheDialog()
{
    QFETCH(bool, byLauncher);
    ExportBench bench;
    bench.window().setAttribute(Qt::WA_DeleteOnClose, false);
    bool isOpen = true;
    QTimer::singleShot(0, &bench.window(), [&] {
        QTimer::singleShot(0, &bench.window(), [&] {
            isOpen = bench.window().findChild<CustomDialog*>()->isVisible();
            if (byLauncher) {
                QMetaObject::invokeMethod(&bench.window(), "handleInput",
                                          Q_ARG(QString, QStringLiteral("exit")));
            } else {
                bench.window().close();
            }
        });
        click(bench.exportButton());
    });
    // Returns from the dialog's loop and from the program's.
    QCOMPARE(QApplication::exec(), 0);
    QVERIFY(isOpen);
    bench.close();
}

SCN_TEST(TestExportRun, QApplication)
#include "test_exportrun.moc"
