#include "export/exportrequest.h"
#include "support/testprogram.h"

#include <QDateTime>
#include <QTest>

#include <ctime>

namespace {

const QString kIdentity = QStringLiteral("MAKER SCN4070A SN:07 1.20");

/// The time of a text at a fixed offset from UTC, in seconds.
qint64 momentAt(const QString& text, int offset)
{
    QDateTime time = QDateTime::fromString(text, QStringLiteral("yyyy MM dd hh mm ss"));
    time.setOffsetFromUtc(offset);
    return time.toMSecsSinceEpoch();
}

constexpr int kHour = 3600;

} // namespace

/// What an export derives from texts.
class TestExportRequest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void separatorFollowsTheRow_data();
    void separatorFollowsTheRow();
    void fileLiesInTheDirectory_data();
    void fileLiesInTheDirectory();
    void headerHasTheseFields();
    void headerOfAShortIdentityIsEmptyThere();
    void rangeIsBetweenTheTwoSeconds();
    void repeatedHourIsTakenWhole();
    void rangeOfNoTimesHoldsNothing_data();
    void rangeOfNoTimesHoldsNothing();
};

void TestExportRequest::init()
{
    qputenv("TZ", "Europe/Berlin");
    tzset();
}

void TestExportRequest::separatorFollowsTheRow_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("separator");
    QTest::newRow("none") << -1 << QStringLiteral(",");
    QTest::newRow("first") << 0 << QStringLiteral(",");
    QTest::newRow("second") << 1 << QStringLiteral(";");
    QTest::newRow("third") << 2 << QStringLiteral("\t");
    QTest::newRow("behind the last") << 3 << QStringLiteral(",");
}

void TestExportRequest::separatorFollowsTheRow()
{
    QFETCH(int, row);
    QFETCH(QString, separator);
    QCOMPARE(exportSeparator(row), separator);
}

void TestExportRequest::fileLiesInTheDirectory_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("identity");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("path");
    const QString trace = QStringLiteral("Trace");
    QTest::newRow("plain") << QStringLiteral("/a/b") << QStringLiteral("M SCN4070A SN07 1") << trace
                           << QStringLiteral("/a/b/SN07_Trace.csv");
    QTest::newRow("separator at the end")
        << QStringLiteral("/a/b/") << QStringLiteral("M SCN4070A SN07 1") << trace
        << QStringLiteral("/a/b/SN07_Trace.csv");
    QTest::newRow("root") << QStringLiteral("/") << QStringLiteral("M SCN4070A SN07 1") << trace
                          << QStringLiteral("/SN07_Trace.csv");
    QTest::newRow("no directory") << QString() << QStringLiteral("M SCN4070A SN07 1") << trace
                                  << QStringLiteral("SN07_Trace.csv");
    QTest::newRow("empty name") << QStringLiteral("/a") << QStringLiteral("M SCN4070A SN07 1")
                                << QString() << QStringLiteral("/a/SN07_顺序对齐曲线数据.csv");
    QTest::newRow("colons") << QStringLiteral("/a") << kIdentity << QStringLiteral("10:30")
                            << QStringLiteral("/a/SN_07_10_30.csv");
    QTest::newRow("path in the name")
        << QStringLiteral("/a") << QStringLiteral("M S ../x 1") << QStringLiteral("../../etc/x")
        << QStringLiteral("/a/.._x_.._.._etc_x.csv");
    QTest::newRow("markers") << QStringLiteral("/%1/%2") << QStringLiteral("M S %2%3 1")
                             << QStringLiteral("%1 %L2")
                             << QStringLiteral("/%1/%2/%2%3_%1 %L2.csv");
    QTest::newRow("blanks and Chinese")
        << QStringLiteral("/数据 目录") << QStringLiteral("M S SN07 1")
        << QStringLiteral("第 一 次") << QStringLiteral("/数据 目录/SN07_第 一 次.csv");
    QTest::newRow("no identity") << QStringLiteral("/a") << QString() << trace
                                 << QStringLiteral("/a/_Trace.csv");
}

void TestExportRequest::fileLiesInTheDirectory()
{
    QFETCH(QString, directory);
    QFETCH(QString, identity);
    QFETCH(QString, name);
    QFETCH(QString, path);
    QCOMPARE(exportFilePath(directory, identity, name), path);
}

void TestExportRequest::headerHasTheseFields()
{
    using Fields = QMap<QString, QString>;
    const Fields expected = {
        {QStringLiteral("address"), QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET")},
        {QStringLiteral("instrumentModel"), QStringLiteral("SCN4070A")},
        {QStringLiteral("instrumentNum"), QStringLiteral("SN:07")},
        {QStringLiteral("instrumentVer"), QStringLiteral("1.20")},
        {QStringLiteral("startTime"), QStringLiteral("2024 01 02 03 04 05")},
        {QStringLiteral("endTime"), QStringLiteral("2024 01 02 03 04 06")}};
    QCOMPARE(exportHeader(QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET"), kIdentity,
                          QStringLiteral("2024 01 02 03 04 05"),
                          QStringLiteral("2024 01 02 03 04 06")),
             expected);
}

void TestExportRequest::headerOfAShortIdentityIsEmptyThere()
{
    const auto header = exportHeader(QString(), QStringLiteral("MAKER SCN4070A"), {}, {});
    QCOMPARE(header.value(QStringLiteral("instrumentModel")), QStringLiteral("SCN4070A"));
    QCOMPARE(header.value(QStringLiteral("instrumentNum")), QString());
    QCOMPARE(header.size(), 6);
}

void TestExportRequest::rangeIsBetweenTheTwoSeconds()
{
    const QString start = QStringLiteral("2024 02 29 23 59 58");
    const QString end = QStringLiteral("2024 07 01 00 00 01");
    const scn::ExportRange range = exportRange(start, end);
    // Winter and summer time.
    QCOMPARE(range.start, momentAt(start, kHour));
    QCOMPARE(range.end, momentAt(end, 2 * kHour));
}

void TestExportRequest::repeatedHourIsTakenWhole()
{
    // A run of 40 minutes that starts in the first of the two hours and ends in the second.
    const QString start = QStringLiteral("2024 10 27 02 40 00");
    const QString end = QStringLiteral("2024 10 27 02 20 00");
    const scn::ExportRange range = exportRange(start, end);
    QCOMPARE(range.start, momentAt(start, 2 * kHour));
    QCOMPARE(range.end, momentAt(end, kHour));
    QCOMPARE(range.end - range.start, qint64(40 * 60 * 1000));
}

void TestExportRequest::rangeOfNoTimesHoldsNothing_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    const QString time = QStringLiteral("2024 01 02 03 04 05");
    QTest::newRow("both empty") << QString() << QString();
    QTest::newRow("no start") << QString() << time;
    QTest::newRow("no end") << time << QString();
    QTest::newRow("rubbish") << QStringLiteral("%1") << QStringLiteral("2024-01-02 03:04:05");
    QTest::newRow("no such month") << QStringLiteral("2024 13 02 03 04 05") << time;
}

void TestExportRequest::rangeOfNoTimesHoldsNothing()
{
    QFETCH(QString, start);
    QFETCH(QString, end);
    const scn::ExportRange range = exportRange(start, end);
    QCOMPARE(range.start, qint64(0));
    QCOMPARE(range.end, qint64(0));
}

SCN_TEST(TestExportRequest, testprogram::NoApplication)
#include "test_exportrequest.moc"
