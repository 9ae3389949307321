#include "export/exportoutcome.h"
#include "support/testprogram.h"

#include <QTest>

/// What the user reads at the end of an export.
class TestExportOutcome : public QObject
{
    Q_OBJECT

private slots:
    void eachResultHasItsText_data();
    void eachResultHasItsText();
    void successNamesEveryFile_data();
    void successNamesEveryFile();
};

void TestExportOutcome::eachResultHasItsText_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("text");
    QTest::newRow("success") << 0 << QStringLiteral("导出成功/a/b.csv");
    QTest::newRow("file") << 1 << QStringLiteral("CSV文件无法打开（可能被占用）");
    QTest::newRow("no data") << 2 << QStringLiteral("没有可以保存的数据");
    QTest::newRow("store") << 3 << QStringLiteral("数据库读取失败，请检查数据文件");
    QTest::newRow("cancelled") << 4 << QStringLiteral("导出已取消");
    QTest::newRow("write") << 5 << QStringLiteral("导出失败");
}

void TestExportOutcome::eachResultHasItsText()
{
    QFETCH(int, result);
    QFETCH(QString, text);
    QCOMPARE(exportOutcomeText(static_cast<ExportResult>(result), {QStringLiteral("/a/b.csv")}),
             text);
}

void TestExportOutcome::successNamesEveryFile_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << QStringList() << QStringLiteral("导出成功");
    QTest::newRow("parts") << QStringList{QStringLiteral("/a/b_1.csv"),
                                          QStringLiteral("/a/b_2.csv"),
                                          QStringLiteral("/a/b_3.csv")}
                           << QStringLiteral("导出成功/a/b_1.csv; /a/b_2.csv; /a/b_3.csv");
    QTest::newRow("markers") << QStringList{QStringLiteral("/%1/%2 %L1.csv")}
                             << QStringLiteral("导出成功/%1/%2 %L1.csv");
}

void TestExportOutcome::successNamesEveryFile()
{
    QFETCH(QStringList, files);
    QFETCH(QString, text);
    QCOMPARE(exportOutcomeText(ExportSuccess, files), text);
}

SCN_TEST(TestExportOutcome, testprogram::NoApplication)
#include "test_exportoutcome.moc"
