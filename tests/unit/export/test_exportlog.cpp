#include "dayfilereader.h"
#include "dayfilewriter.h"
#include "drivertap.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "storage/curvedatadb.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QDir>
#include <QFile>
#include <QtTest>

namespace {

constexpr int kRows = 150;
constexpr const char* kUndated = "curve_1_batch_undated";
const QStringList kEnd = {
    QString::fromUtf8("debug: [初始化查询] 曲线 1 所有分片表已处理完毕"),
    QString::fromUtf8("debug: [导出线程] 所有曲线数据导出完成"),
};

qint64 at(const char* time)
{
    return localTime(QByteArray(time).append(":00.000").constData());
}

/// One curve on 2026-01-12, and the export of that day and the next.
ExportOrder oneDay(ExportScene& scene)
{
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay("20260112", {{1, text("101(V)"), samplesFrom(at("2026-01-12 06:00"), kRows)}});
    return scene.order({1}, at("2026-01-12 00:00"), at("2026-01-12 23:59"));
}

/// The log of an order whose export must succeed.
QStringList logOf(ExportScene& scene, const ExportOrder& order, ExportResult result = ExportSuccess)
{
    const ExportOutcome outcome = runExport(order);
    if (outcome.result != result) {
        return {text("result %1").arg(outcome.result)};
    }
    const QByteArray written = partsIn(scene.outputDirectory()).value(1);
    const QByteArray expected =
        result == ExportSuccess ? scene.expectedParts(order).constFirst() : QByteArray();
    return written == expected ? outcome.log : QStringList{text("another file")};
}

} // namespace

/// The log lines of an export about missing tables and files, word for word with their level, and
/// what it exports nevertheless.
class TestExportLog : public QObject
{
    Q_OBJECT

private slots:
    void rangeWithoutFiles();
    void dayWithoutAFile();
    void fileWithoutTheCurve();
    void fileThatCannotBeOpened();
    void fileThatCannotBeOpenedLater();
    void fileWithoutItsBatches();
    void tableWithoutADate();
    void tableWithoutADateThatIsNotThere();
    void lookUpThatFails();
    void tableWithoutSamples();

private:
    const SkippedWaits m_waits;
};

void TestExportLog::rangeWithoutFiles()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const ExportOrder order = scene.order({1, 2}, at("2026-01-12 22:00"), at("2026-01-13 01:00"));
    QStringList expected;
    for (const char* day : {"20260112", "20260113"}) {
        for (const int id : {1, 2}) {
            expected.append(text("debug: [获取分片表] 曲线 %1 数据库不存在： \"%2\"")
                                .arg(QString::number(id), scene.store().path(day)));
        }
    }
    for (const int id : {1, 2}) {
        expected.append(text("warning: [获取分片表] 曲线 %1 时间范围内无有效数据库文件").arg(id));
    }
    for (const int id : {1, 2}) {
        expected.append(text("warning: [Cursor初始化] 曲线 %1 未获取到任何分片表").arg(id));
    }
    expected.append(text("critical: [导出线程] 所有选中曲线均无有效数据（游标初始化失败）"));
    QCOMPARE(logOf(scene, order, ExportNoData), expected);
}

void TestExportLog::dayWithoutAFile()
{
    ExportScene scene;
    ExportOrder order = oneDay(scene);
    order.end = at("2026-01-13 12:00");
    QCOMPARE(logOf(scene, order),
             QStringList{text("debug: [获取分片表] 曲线 1 数据库不存在： \"%1\"")
                             .arg(scene.store().path("20260113"))} +
                 kEnd);
}

/// And one that has the curve but no batch in the range.
void TestExportLog::fileWithoutTheCurve()
{
    ExportScene scene;
    ExportOrder order = oneDay(scene);
    scene.addDay("20260111", {{1, text("101(V)"), samplesFrom(at("2026-01-11 01:00"), 5)}});
    scene.addDay("20260113", {{1, text("102(V)"), samplesFrom(at("2026-01-13 01:00"), 5)}});
    order.start = at("2026-01-11 12:00");
    order.end = at("2026-01-13 12:00");
    const QString line = text("debug: [获取分片表] 曲线 1 数据库 \"%1\" "
                              "中无匹配的分片表（时间范围/曲线ID不匹配）");
    QCOMPARE(logOf(scene, order), (QStringList{line.arg(scene.store().path("20260111")),
                                               line.arg(scene.store().path("20260113"))} +
                                   kEnd));
}

/// A directory is in its place.
void TestExportLog::fileThatCannotBeOpened()
{
    ExportScene scene;
    ExportOrder order = oneDay(scene);
    order.end = at("2026-01-13 12:00");
    const QString path = scene.store().path("20260113");
    QVERIFY(QDir().mkpath(path));
    const QStringList log = logOf(scene, order, ExportDbError);
    QVERIFY2(
        log.contains(
            text("warning: [获取分片表] 曲线 1 打开数据库 \"%1\" 失败（openDb返回空）").arg(path)),
        qPrintable(log.join(QLatin1Char('\n'))));
}

void TestExportLog::fileThatCannotBeOpenedLater()
{
    ExportScene scene;
    ExportOrder order = oneDay(scene);
    order.end = at("2026-01-13 12:00");
    order.rowsPerBlock = 10;
    scene.addDay("20260113", {{1, text("101(V)"), samplesFrom(at("2026-01-13 06:00"), 5)}});
    const QString path = scene.store().path("20260113");
    const auto outcome = runExport(order, [&path](CsvExportFromDBThread&) {
        QVERIFY(QFile::remove(path));
        QVERIFY(QDir().mkpath(path));
    });
    QCOMPARE(outcome.result, ExportDbError);
    QVERIFY2(outcome.log.contains(text("warning: [初始化查询] 打开数据库 \"%1\" 失败").arg(path)),
             qPrintable(outcome.log.join(QLatin1Char('\n'))));
    QVERIFY(QDir(scene.outputDirectory()).isEmpty());
}

/// A file whose creation was interrupted holds no data, and does not hide the others'.
void TestExportLog::fileWithoutItsBatches()
{
    ExportScene scene;
    ExportOrder order = oneDay(scene);
    order.end = at("2026-01-13 12:00");
    scene.addDay("20260113", {{1, text("101(V)"), samplesFrom(at("2026-01-13 06:00"), 5)}});
    const QString path = scene.store().path("20260113");
    QCOMPARE(dayfile::execute(path, text("DROP TABLE batch_metadata")), QString());
    scene.forget(text("101(V)"), at("2026-01-13 00:00"), order.end);
    QCOMPARE(logOf(scene, order),
             (QStringList{text("warning: 查询分片元数据失败: \"no such table: batch_metadata "
                               "Unable to execute statement\""),
                          text("debug: [获取分片表] 曲线 1 数据库 \"%1\" "
                               "中无匹配的分片表（时间范围/曲线ID不匹配）")
                              .arg(path)} +
              kEnd));
}

void TestExportLog::tableWithoutADate()
{
    ExportScene scene;
    const ExportOrder order = oneDay(scene);
    const QString path = scene.store().path("20260112");
    const qint64 noon = at("2026-01-12 12:00");
    DayFileWriter(path).addBatch(1, noon, text(kUndated), {});
    for (int reading = 0; reading < 7; ++reading) {
        const qint64 time = noon + reading;
        QCOMPARE(
            dayfile::execute(
                path, text("INSERT INTO %1 (curve_id, timestamp, value) VALUES (1, %2, "
                           "%3)")
                          .arg(text(kUndated), QString::number(time), QString::number(reading))),
            QString());
    }
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(outcome.log,
             (QStringList{text("warning: [初始化查询] 分片表 \"%1\" 未提取到日期，启动兜底方案")
                              .arg(text(kUndated)),
                          text("debug: [初始化查询] 兜底方案找到表 \"%1\" 对应的数据库： \"%2\"")
                              .arg(text(kUndated), path)} +
              kEnd));
    const QByteArray written = partsIn(scene.outputDirectory()).value(1);
    const QByteArray others = scene.expectedParts(order).constFirst();
    QVERIFY(written.startsWith(others));
    QByteArray rows;
    for (int reading = 0; reading < 7; ++reading) {
        rows += text("%1,2026-01-12 12:00:00,%2\n")
                    .arg(QString::number(kRows + 1 + reading),
                         QString::asprintf("%.15E", double(reading)))
                    .toUtf8();
    }
    QCOMPARE(written.mid(others.size()), rows);
}

void TestExportLog::tableWithoutADateThatIsNotThere()
{
    ExportScene scene;
    const ExportOrder order = oneDay(scene);
    DayFileWriter(scene.store().path("20260112"))
        .addBatchRow(1, at("2026-01-12 12:00"), text(kUndated));
    QCOMPARE(logOf(scene, order),
             (QStringList{text("warning: [初始化查询] 分片表 \"%1\" 未提取到日期，启动兜底方案")
                              .arg(text(kUndated)),
                          text("warning: [初始化查询] 未找到分片表 \"%1\" 对应的数据库，跳过该表")
                              .arg(text(kUndated))} +
              kEnd));
}

void TestExportLog::lookUpThatFails()
{
    ExportScene scene;
    const ExportOrder order = oneDay(scene);
    const QString path = scene.store().path("20260112");
    DayFileWriter(path).addBatch(1, at("2026-01-12 12:00"), text(kUndated), {});
    const auto db = scene.store()->openDb(path);
    const DeniedTables denied(*db, {text("sqlite_master")});
    const QStringList log = logOf(scene, order, ExportDbError);
    const QString line =
        text("warning: [初始化查询] 检查表 \"%1\" 是否存在失败： \"").arg(text(kUndated));
    const QStringList told = log.filter(line);
    QVERIFY2(told.size() == 1 && told.constFirst().startsWith(line) &&
                 told.constFirst().contains(text("prohibited")),
             qPrintable(log.join(QLatin1Char('\n'))));
}

/// Its batch is in the range.
void TestExportLog::tableWithoutSamples()
{
    ExportScene scene;
    const ExportOrder order = oneDay(scene);
    const qint64 noon = at("2026-01-12 12:00");
    const QString table = DayFileWriter::tableName(1, noon);
    DayFileWriter(scene.store().path("20260112")).addBatch(1, noon, table, {});
    QCOMPARE(logOf(scene, order), (QStringList{text("warning: [初始化查询] 分片表 \"%1\" "
                                                    "无匹配数据（时间范围/曲线ID过滤后为空）")
                                                   .arg(table)} +
                                   kEnd));
}

SCN_TEST(TestExportLog, QCoreApplication)
#include "test_exportlog.moc"
