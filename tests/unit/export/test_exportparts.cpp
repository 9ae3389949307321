#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "storechild.h"
#include "support/logcapture.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QDir>
#include <QFile>
#include <QTextStream>
#include <QtTest>

namespace {

constexpr int kNameBytes = 255; // the longest name that a file may have
constexpr int kStampBytes = 14;

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).append(".000").constData());
}

/// What is on the disk under a part's name, ignoring its time, which depends on the clock.
QString withoutStamp(QString path)
{
    return path.remove(QRegularExpression(QStringLiteral("\\d{14}(?=\\.[^.]*$)")));
}

/// One curve with this many samples on 2026-01-12.
ExportOrder oneCurve(ExportScene& scene, int samples)
{
    scene.know({{1, text("101(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(at("06:00:00"), samples, 10)}});
    return scene.order({1}, at("00:00:00"), at("23:59:59"));
}

} // namespace

/// The files of an export: names, header, and that none is left where none belongs.
class TestExportParts : public QObject
{
    Q_OBJECT

private slots:
    void partPaths_data();
    void partPaths();
    void timeOfAPartIsReadAtEachCall();
    void partIsCreatedWithItsDirectory();
    void openPartIsClosedFirst();
    void directoryThatCannotBeMadeWarns();
    void fileThatCannotBeOpenedWarns();
    void pathsOfAllKinds_data();
    void pathsOfAllKinds();
    void directoryThatVanishedIsMadeAgain();
    void nameThatIsTooLong();
    void partThatCannotBeCreatedTakesTheEarlierOnes();
    void secondPartThatCannotBeCreatedTakesTheFirst();
    void listedNamesMayBeAheadOfTheFiles();
    void fullPart();

private:
    const SkippedWaits m_waits;
};

void TestExportParts::partPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("part");
    QTest::newRow("plain") << text("/a/b/curves.csv") << 1 << text("/a/b/curves_1_.csv");
    QTest::newRow("two digits") << text("/a/curves.csv") << 12 << text("/a/curves_12_.csv");
    QTest::newRow("dots") << text("/a.b/x.y.z.csv") << 3 << text("/a.b/x.y.z_3_.csv");
    QTest::newRow("no suffix") << text("/a/curves") << 1 << text("/a/curves_1_.");
    QTest::newRow("Chinese") << text("/数据/顺序对齐曲线数据.csv") << 1
                             << text("/数据/顺序对齐曲线数据_1_.csv");
    QTest::newRow("places") << text("/%2/%1 %3.csv") << 4 << text("/%2/%1 %3_4_.csv");
    QTest::newRow("relative") << text("below/curves.csv") << 1
                              << QDir::currentPath() + text("/below/curves_1_.csv");
}

void TestExportParts::partPaths()
{
    QFETCH(QString, path);
    QFETCH(int, index);
    const QString part = CurveDataDB::partFilePath(path, index);
    QTEST(withoutStamp(part), "part");
}

void TestExportParts::timeOfAPartIsReadAtEachCall()
{
    const auto stamp = [] {
        const QString path = CurveDataDB::partFilePath(text("/a/b.csv"), 1);
        return QDateTime::fromString(path.mid(path.size() - kStampBytes - 4, kStampBytes),
                                     text("yyyyMMddhhmmss"));
    };
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    const QDateTime first = stamp();
    QVERIFY(first >= before && first <= QDateTime::currentDateTime());
    QTRY_VERIFY(stamp() > first);
}

void TestExportParts::partIsCreatedWithItsDirectory()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("温度")}, {3, text("103(V)")}});
    const QString directory = scene.outputDirectory() + text("/deep/below");
    const LogCapture log;
    {
        QFile file;
        QTextStream stream;
        QVERIFY(scene.store()->openCsvPart(directory + text("/x.csv"), 7, text("; "),
                                           {{text("address"), text("here")}},
                                           {{1, text("101(V)")}, {2, text("温度")}}, file, stream));
        QVERIFY(file.isOpen() && !file.isReadable());
        QCOMPARE(withoutStamp(file.fileName()), directory + text("/x_7_.csv"));
        QCOMPARE(stream.codec()->name(), QByteArray("UTF-8"));
        stream << "row";
    }
    QCOMPARE(partsIn(directory).value(7),
             plainHeader({{text("101(V)"), {}}, {text("温度"), {}}}, text("; "),
                         {{text("address"), text("here")}}) +
                 "row");
    QCOMPARE(log.lines(), QStringList());
}

void TestExportParts::openPartIsClosedFirst()
{
    ExportScene scene;
    const QString path = scene.outputDirectory() + text("/x.csv");
    QFile file;
    QTextStream stream;
    QVERIFY(scene.store()->openCsvPart(path, 1, text(","), {}, {}, file, stream));
    stream << "last of the first\n";
    QVERIFY(scene.store()->openCsvPart(path, 2, text(","), {}, {}, file, stream));
    stream << "of the second\n";
    stream.flush();
    const auto parts = partsIn(scene.outputDirectory());
    QCOMPARE(parts.size(), 2);
    QCOMPARE(parts.value(1), plainHeader({}, text(","), {}) + "last of the first\n");
    QCOMPARE(parts.value(2), plainHeader({}, text(","), {}) + "of the second\n");
}

void TestExportParts::directoryThatCannotBeMadeWarns()
{
    ExportScene scene;
    const QString obstacle = scene.outputDirectory() + text("/file");
    QVERIFY(QFile(obstacle).open(QIODevice::WriteOnly));
    QFile file;
    QTextStream stream;
    const LogCapture log;
    QVERIFY(!scene.store()->openCsvPart(obstacle + text("/below/x.csv"), 1, text(","), {}, {}, file,
                                        stream));
    QCOMPARE(log.lines(),
             QStringList{text("warning: 无法创建目标目录: \"%1/below\"").arg(obstacle)});
    QVERIFY(!file.isOpen());
}

void TestExportParts::fileThatCannotBeOpenedWarns()
{
    ExportScene scene;
    const QString path =
        scene.outputDirectory() + QLatin1Char('/') + QString(300, QLatin1Char('x')) + text(".csv");
    QFile file;
    QTextStream stream;
    const LogCapture log;
    QVERIFY(!scene.store()->openCsvPart(path, 1, text(","), {}, {}, file, stream));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().first() == text("warning: 无法创建CSV文件: \"%1\" \"%2\"")
                                        .arg(file.fileName(), file.errorString()) &&
                 !file.errorString().isEmpty(),
             qPrintable(log.lines().first()));
}

void TestExportParts::pathsOfAllKinds_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("blanks") << text("  my results /of today .csv");
    QTest::newRow("places") << text("%1/%2 %3.%4");
    QTest::newRow("Chinese") << text("导出 数据/顺序对齐曲线数据：（一）.csv");
    QTest::newRow("quotes") << text("it's/\"a\" `b`.csv");
    QTest::newRow("300 characters") << QString(100, QLatin1Char('a')) + text("/") +
                                           QString(100, QLatin1Char('b')) + text("/") +
                                           QString(100, QLatin1Char('c')) + text(".csv");
    QTest::newRow("longest name") << QString(kNameBytes - kStampBytes - 7, QLatin1Char('d')) +
                                         text(".csv");
}

void TestExportParts::pathsOfAllKinds()
{
    QFETCH(QString, path);
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 25);
    order.rowsPerPart = 20;
    order.path = scene.outputDirectory() + QLatin1Char('/') + path;
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(outcome.files.size(), 2);
    const auto parts = partsIn(QFileInfo(order.path).absolutePath());
    QCOMPARE(parts.values().toVector(), scene.expectedParts(order));
    for (int part = 1; part <= 2; ++part) {
        QCOMPARE(withoutStamp(outcome.files.at(part - 1)),
                 withoutStamp(CurveDataDB::partFilePath(order.path, part)));
    }
}

/// Between choosing the path and creating the file, and between two parts.
void TestExportParts::directoryThatVanishedIsMadeAgain()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 250);
    const QString directory = scene.outputDirectory() + text("/chosen");
    order.path = directory + text("/x.csv");
    order.rowsPerPart = 200;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        QDir().rename(directory, scene.outputDirectory() + text("/moved"));
    });
    QCOMPARE(outcome.result, ExportSuccess);
    const auto moved = partsIn(scene.outputDirectory() + text("/moved"));
    const auto made = partsIn(directory);
    QCOMPARE(moved.keys(), QList<int>{1});
    QCOMPARE(made.keys(), QList<int>{2});
    QCOMPARE((QVector<QByteArray>{moved.value(1), made.value(2)}), scene.expectedParts(order));
}

void TestExportParts::nameThatIsTooLong()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 5);
    order.path = scene.outputDirectory() + QLatin1Char('/') + QString(300, QLatin1Char('x'));
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportFileError);
    QVERIFY(outcome.files.isEmpty());
    QVERIFY(QDir(scene.outputDirectory()).isEmpty());
    QCOMPARE(withoutStamp(outcome.log.last()),
             withoutStamp(text("critical: [导出线程] "
                               "创建CSV文件失败： \"%1\"")
                              .arg(CurveDataDB::partFilePath(order.path, 1))));
}

/// The name of the tenth part is a byte too long.
void TestExportParts::partThatCannotBeCreatedTakesTheEarlierOnes()
{
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 100);
    order.path = scene.outputDirectory() + QLatin1Char('/') +
                 QString(kNameBytes - kStampBytes - 7, QLatin1Char('x')) + text(".csv");
    order.rowsPerPart = 12;
    QCOMPARE(scene.expectedParts(order).size(), 9);
    QCOMPARE(scene.difference(order), QString());
    order.rowsPerPart = 10;
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportFileError);
    QVERIFY(outcome.files.isEmpty());
    QVERIFY(QDir(scene.outputDirectory()).isEmpty());
    const QString line = outcome.log.last();
    QVERIFY2(line.startsWith(text("critical: [导出线程] 创建CSV分片失败： \"%1")
                                 .arg(order.path.chopped(4) + text("_10_"))),
             qPrintable(line));
}

/// Directories have the names that the second part may get.
void TestExportParts::secondPartThatCannotBeCreatedTakesTheFirst()
{
    constexpr int kSeconds = 60;
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 250);
    order.rowsPerPart = 150;
    const QDateTime now = QDateTime::currentDateTime();
    const QString stem = order.path.chopped(4);
    for (int second = 0; second < kSeconds; ++second) {
        QVERIFY(QDir().mkpath(
            text("%1_2_%2.csv").arg(stem, now.addSecs(second).toString(text("yyyyMMddhhmmss")))));
    }
    bool hadFirst = false;
    const auto outcome = runExport(order, [&](CsvExportFromDBThread&) {
        hadFirst = QDir(scene.outputDirectory()).entryList(QDir::Files).size() == 1;
    });
    QVERIFY(hadFirst);
    QCOMPARE(outcome.result, ExportFileError);
    QVERIFY(outcome.files.isEmpty());
    QVERIFY2(outcome.log.last().startsWith(
                 text("critical: [导出线程] 创建CSV分片失败： \"%1_2_").arg(stem)),
             qPrintable(outcome.log.last()));
    QCOMPARE(QDir(scene.outputDirectory()).entryList(QDir::Files), QStringList());
}

/// The listed name reads the clock again. With a clock 20,000 times as fast, most are ahead of the
/// files' own names: these must be removed.
void TestExportParts::listedNamesMayBeAheadOfTheFiles()
{
    if (qstrlen(SCN_FAKETIME_LIBRARY) == 0) {
        SCN_SKIP(text("the package faketime is not installed"));
    }
    if (!qEnvironmentVariableIsSet(ChildScene::kMark)) {
        const ChildScene child(text(QTest::currentTestFunction()),
                               {{text("FAKETIME"), text("+0 x20000")},
                                {text("FAKETIME_DONT_FAKE_MONOTONIC"), text("1")},
                                {text("LD_PRELOAD"), text(SCN_FAKETIME_LIBRARY)}});
        QVERIFY2(child.passed(), qPrintable(child.output()));
        return;
    }
    ExportScene scene;
    ExportOrder order = oneCurve(scene, 150);
    order.rowsPerPart = 1;
    const auto whole = runExport(order);
    QCOMPARE(whole.result, ExportSuccess);
    QDir directory(scene.outputDirectory());
    QCOMPARE(directory.entryList(QDir::Files).size(), 151);
    int ahead = 0;
    for (const QString& name : whole.files) {
        ahead += QFile::exists(name) ? 0 : 1;
    }
    QVERIFY2(ahead > 0, "no name differs");
    for (const QString& name : directory.entryList(QDir::Files)) {
        QVERIFY(directory.remove(name));
    }

    const auto stopped =
        runExport(order, [](CsvExportFromDBThread& thread) { thread.requestStop(); });
    QCOMPARE(stopped.result, ExportCancelled);
    QVERIFY(stopped.files.isEmpty());
    QCOMPARE(directory.entryList(QDir::Files), QStringList());
}

/// As many rows as a part holds, and one fewer: a thousand, or in the long run the million that a
/// real part holds.
void TestExportParts::fullPart()
{
    constexpr int kMillion = 1000000;
    const bool full = qEnvironmentVariableIsSet("SCN_MILLION_ROWS");
    const int rows = full ? kMillion : 1000;
    ExportScene scene;
    ExportOrder order = oneCurve(scene, rows);
    for (const int missing : {0, 1}) {
        order.end = at("06:00:00") + (rows - 1 - missing) * 10;
        order.rowsPerPart = rows;
        const QVector<QByteArray> expected = scene.expectedParts(order);
        QCOMPARE(expected.size(), 2 - missing);
        if (full) {
            order.rowsPerPart = 0; // the number that there is
        }
        const auto outcome = runExport(order);
        QCOMPARE(outcome.result, ExportSuccess);
        QCOMPARE(outcome.files.size(), expected.size());
        QVERIFY(partsIn(scene.outputDirectory()).values().toVector() == expected);
        QCOMPARE(outcome.progress.size(), rows / 100);
        QVERIFY(QDir(scene.outputDirectory()).removeRecursively());
    }
}

SCN_TEST(TestExportParts, QCoreApplication)
#include "test_exportparts.moc"
