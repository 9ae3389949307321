#include "dayfilewriter.h"
#include "export/csvexportfromdbthread.h"
#include "exportscene.h"
#include "skippedwaits.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QtTest>

namespace {

constexpr const char* kDay = "20260112";

qint64 at(const char* timeOfDay)
{
    return localTime(QByteArray("2026-01-12 ").append(timeOfDay).constData());
}

QString number(int value)
{
    return QString::number(value);
}

QMap<QString, QString> fullHeader()
{
    return {{text("address"), text("TCPIP0::192.0.2.7::INSTR")},
            {text("instrumentModel"), text("SCN4070A")},
            {text("instrumentNum"), text("SN0001")},
            {text("instrumentVer"), text("A.02.14-not-to-be-seen")},
            {text("startTime"), text("2026-01-12 08:00:00")},
            {text("endTime"), text("2026-01-12 20:00:00")}};
}

} // namespace

/// The export byte for byte, against files the test writes from what it stored.
class TestExportRows : public QObject
{
    Q_OBJECT

private slots:
    void columnsOfEqualLength();
    void shorterCurvesLeaveTheirFieldsEmpty();
    void firstCurveEndingEarlyEmptiesTheTimes();
    void missingSampleMovesLaterValuesUp();
    void columnsFollowTheIds();
    void sixtyCurves();
    void eachSeparator_data();
    void eachSeparator();
    void namesAreWrittenAsTheyAre();
    void missingHeaderTextsAreEmpty();
    void blocksLeaveNoTrace();
    void partsRepeatTheHeader();
    void bothSecondsAreIncluded();
    void lastPartialSecondStaysInTheStore();

private:
    const SkippedWaits m_waits;
};

void TestExportRows::columnsOfEqualLength()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("08:00:00.000"), 1234)},
                        {2, text("102(V)"), samplesFrom(at("08:00:00.400"), 1234)}});
    ExportOrder order = scene.order({1, 2}, at("00:00:00.000"), at("23:59:59.000"));
    order.header = fullHeader();
    QCOMPARE(scene.difference(order), QString());
    QVERIFY(!scene.expectedParts(order).first().contains("not-to-be-seen"));
    QCOMPARE(scene.expectedParts(order).first().count('\n'), 6 + 1234);
}

void TestExportRows::shorterCurvesLeaveTheirFieldsEmpty()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}, {3, text("103(V)")}, {4, text("none")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("08:00:00.000"), 50)},
                        {2, text("102(V)"), samplesFrom(at("08:00:00.000"), 20)},
                        {3, text("103(V)"), samplesFrom(at("08:00:00.000"), 1)}});
    QCOMPARE(scene.difference(scene.order({1, 2, 3, 4}, at("00:00:00.000"), at("23:59:59.000"))),
             QString());
}

void TestExportRows::firstCurveEndingEarlyEmptiesTheTimes()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("08:00:00.000"), 3)},
                        {2, text("102(V)"), samplesFrom(at("08:00:00.000"), 5)}});
    const ExportOrder order = scene.order({1, 2}, at("00:00:00.000"), at("23:59:59.000"));
    QVERIFY(scene.expectedParts(order).first().endsWith(
        "\n3,2026-01-12 08:00:02,-1.500000000000000E+00,-1.500000000000000E+00"
        "\n4,,,-1.000000000000000E+00\n5,,,-5.000000000000000E-01\n"));
    QCOMPARE(scene.difference(order), QString());
    // A first curve without samples gives no times.
    ExportScene other;
    other.know({{1, text("101(V)")}, {2, text("102(V)")}});
    other.addDay(kDay, {{2, text("102(V)"), samplesFrom(at("08:00:00.000"), 5)}});
    QCOMPARE(other.difference(other.order({1, 2}, at("00:00:00.000"), at("23:59:59.000"))),
             QString());
}

void TestExportRows::missingSampleMovesLaterValuesUp()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const QVector<QPointF> whole = samplesFrom(at("11:59:55.000"), 10);
    QVector<QPointF> gap = whole;
    gap.remove(4);
    scene.addDay(kDay, {{1, text("101(V)"), whole}, {2, text("102(V)"), gap}});
    const ExportOrder order = scene.order({1, 2}, at("00:00:00.000"), at("23:59:59.000"));
    QVERIFY(scene.expectedParts(order).first().contains(
        "\n5,2026-01-12 11:59:59,-5.000000000000000E-01,0.000000000000000E+00\n"));
    QCOMPARE(scene.difference(order), QString());
}

void TestExportRows::columnsFollowTheIds()
{
    ExportScene scene;
    scene.know({{2, text("102(V)")}, {10, text("101(V)")}, {11, text("111(V)")}});
    scene.addDay(kDay, {{2, text("102(V)"), samplesFrom(at("08:00:00.000"), 4)},
                        {10, text("101(V)"), samplesFrom(at("08:00:00.300"), 5, 1700)},
                        {11, text("111(V)"), samplesFrom(at("09:00:00.000"), 6)}});
    // Requested in any order and more than once; what the store does not know is left out.
    QCOMPARE(
        scene.difference(scene.order({11, 99, 2, 10, 2}, at("00:00:00.000"), at("23:59:59.000"))),
        QString());
    QCOMPARE(scene.difference(scene.order({11}, at("00:00:00.000"), at("23:59:59.000"))),
             QString());
}

void TestExportRows::sixtyCurves()
{
    ExportScene scene;
    QMap<int, QString> names;
    QVector<DayCurve> curves;
    for (int id = 1; id <= 60; ++id) {
        names.insert(id, number(100 + id) + text("(V)"));
        curves.append({id, names.value(id), samplesFrom(at("05:59:50.000") + id, 20 + id % 7)});
    }
    scene.know(names);
    scene.addDay(kDay, curves);
    QCOMPARE(scene.difference(scene.order(names.keys(), at("00:00:00.000"), at("23:59:59.000"))),
             QString());
}

void TestExportRows::eachSeparator_data()
{
    QTest::addColumn<QString>("separator");
    QTest::newRow("comma") << text(",");
    QTest::newRow("semicolon") << text(";");
    QTest::newRow("tab") << text("\t");
    QTest::newRow("blank") << text(" ");
    QTest::newRow("Chinese comma") << text("，");
    QTest::newRow("several") << text(" %1| ");
    QTest::newRow("none") << QString();
}

void TestExportRows::eachSeparator()
{
    QFETCH(QString, separator);
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("08:00:00.000"), 7)},
                        {2, text("102(V)"), samplesFrom(at("08:00:00.000"), 9)}});
    ExportOrder order = scene.order({1, 2}, at("00:00:00.000"), at("23:59:59.000"));
    order.separator = separator;
    order.header = fullHeader();
    QCOMPARE(scene.difference(order), QString());
}

void TestExportRows::namesAreWrittenAsTheyAre()
{
    ExportScene scene;
    const QMap<int, QString> names{{1, text("101(℃)")},       {2, text("温度，华氏度(℉)")},
                                   {3, QString(text(""))},    {4, text("%1 %2 'quoted' \"x\" `y`")},
                                   {5, text("a/b\\c:*?<>|")}, {6, text(" blanks ")}};
    scene.know(names);
    QVector<DayCurve> curves;
    for (const int id : names.keys()) {
        curves.append({id, names.value(id), samplesFrom(at("08:00:00.000"), 3 + id)});
    }
    scene.addDay(kDay, curves);
    ExportOrder order = scene.order(names.keys(), at("00:00:00.000"), at("23:59:59.000"));
    order.header = {{text("address"), text("地址%1,%2")}};
    QCOMPARE(scene.difference(order), QString());
}

void TestExportRows::missingHeaderTextsAreEmpty()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("08:00:00.000"), 1)}});
    ExportOrder order = scene.order({1}, at("00:00:00.000"), at("23:59:59.000"));
    QCOMPARE(scene.expectedParts(order).first(),
             QByteArray("\xEF\xBB\xBF地址,\n型号,\n序列号：,\n开始时间,\n结束时间,\n编号,时间,"
                        "101(V),\n1,2026-01-12 08:00:00,-2.500000000000000E+00\n"));
    QCOMPARE(scene.difference(order), QString());
    for (const char* key :
         {"address", "instrumentModel", "instrumentNum", "startTime", "endTime"}) {
        order.header = fullHeader();
        order.header.remove(text(key));
        QCOMPARE(scene.difference(order), QString());
    }
}

void TestExportRows::blocksLeaveNoTrace()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}, {3, text("103(V)")}});
    // Across a batch edge, so that blocks end anywhere in a table.
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("11:59:47.000"), 28)},
                        {2, text("102(V)"), samplesFrom(at("11:59:52.000"), 35)},
                        {3, text("103(V)"), samplesFrom(at("11:59:59.000"), 1)}});
    ExportOrder order = scene.order({1, 2, 3}, at("00:00:00.000"), at("23:59:59.000"));
    for (const int rowsPerBlock : {1, 2, 7, 28, 35, 1000}) {
        order.rowsPerBlock = rowsPerBlock;
        for (const int rowsPerPart : {0, 1, 5, 34, 35}) {
            order.rowsPerPart = rowsPerPart;
            QCOMPARE(scene.difference(order), QString());
        }
    }
}

void TestExportRows::partsRepeatTheHeader()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesFrom(at("08:00:00.000"), 20)},
                        {2, text("102(V)"), samplesFrom(at("08:00:00.000"), 18)}});
    ExportOrder order = scene.order({1, 2}, at("00:00:00.000"), at("23:59:59.000"));
    order.header = fullHeader();
    const int parts[][2] = {{6, 4}, {19, 2}, {20, 2}, {21, 1}, {10, 3}, {1, 21}};
    for (const auto& part : parts) {
        order.rowsPerPart = part[0];
        QCOMPARE(scene.expectedParts(order).size(), part[1]);
        QCOMPARE(scene.difference(order), QString());
    }
    // As many rows as a part holds: the second has only a header.
    order.rowsPerPart = 20;
    QCOMPARE(scene.expectedParts(order).last().count('\n'), 6);
}

void TestExportRows::bothSecondsAreIncluded()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    const qint64 start = at("08:00:00.000");
    const qint64 end = at("13:00:00.000");
    QVector<QPointF> samples;
    for (const qint64 time : {start - 1, start, start + 1, end - 1, end, end + 1}) {
        samples.append(QPointF(static_cast<double>(time), samples.size()));
    }
    scene.addDay(kDay, {{1, text("101(V)"), samples}});
    const ExportOrder order = scene.order({1}, start, end);
    QVERIFY(scene.expectedParts(order).first().endsWith(
        "101(V),\n1,2026-01-12 08:00:00,1.000000000000000E+00"
        "\n2,2026-01-12 08:00:00,2.000000000000000E+00"
        "\n3,2026-01-12 12:59:59,3.000000000000000E+00"
        "\n4,2026-01-12 13:00:00,4.000000000000000E+00\n"));
    QCOMPARE(scene.difference(order), QString());
    QCOMPARE(scene.difference(scene.order({1}, start, start)), QString());
}

/// The texts of an export's range have whole seconds, and the last second of a run is rarely whole.
void TestExportRows::lastPartialSecondStaysInTheStore()
{
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {2, text("102(V)")}});
    const qint64 start = localTime("2026-03-10 11:50:00.000");
    for (int i = 0; i <= 20; ++i) {
        scene.append(1, start + i * 250, i);
        scene.append(2, start + i * 250 + 3, -i);
    }
    const qint64 end = start + 5000;
    scene.append(1, end + 250, 100.0);
    scene.append(2, end + 253, 101.0);
    const ExportOrder order = scene.order({1, 2}, start, end);
    QCOMPARE(scene.difference(order), QString());
    const QByteArray expected = scene.expectedParts(order).first();
    QCOMPARE(expected.count('\n'), 6 + 21);
    QVERIFY(expected.endsWith("\n21,2026-03-10 11:50:05,2.000000000000000E+01,\n"));
    QCOMPARE(scene.store()->readCurveData(2, start, end + 253, 0).size(), 22);
}

SCN_TEST(TestExportRows, QCoreApplication)
#include "test_exportrows.moc"
