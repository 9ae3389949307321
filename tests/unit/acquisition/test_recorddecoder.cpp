#include "acquisition/readdata.h"
#include "acquisition/recorddecoder.h"
#include "support/logcapture.h"
#include "support/testprogram.h"

#include <QRegExp>
#include <QtTest>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>

namespace {

const QString kSkipped = QStringLiteral("无效的数据记录，跳过解析");
const QString kIncomplete = QStringLiteral("存在不完整的数据记录，已忽略");
const QString kBadTime = QStringLiteral("无效的日期时间格式");

const QString kGoodRecord = QStringLiteral("+1.5E+00 V,2024,1,2,3,4,5.600,101,0");

QStringList fieldsOf(const QString& record)
{
    return record.split(QLatin1Char(','));
}

/// Sets the process's time zone; Qt asks the C library each time.
class TimeZone
{
public:
    explicit TimeZone(const char* zone)
        : m_before(qgetenv("TZ"))
        , m_wasSet(qEnvironmentVariableIsSet("TZ"))
    {
        qputenv("TZ", zone);
        tzset();
    }

    ~TimeZone()
    {
        if (m_wasSet) {
            qputenv("TZ", m_before);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }

    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    QByteArray m_before;
    bool m_wasSet;
};

constexpr char kCentralEurope[] = "CET-1CEST,M3.5.0,M10.5.0/3";

/// A plain decoder that uses Qt's own text operations, as the reference.
QList<MeasurementData> plainlyDecoded(const QString& reply)
{
    QString text = reply;
    QRegExp header(QStringLiteral("^#\\d{1,10}"));
    if (header.indexIn(text) == 0) {
        text.remove(0, header.matchedLength());
    }
    const QStringList parts = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    QList<MeasurementData> batch;
    for (int group = 0; 9 * group + 8 < parts.size(); ++group) {
        const QStringList fields = parts.mid(9 * group, 9);
        const QString reading = fields[0].trimmed();
        const int blank = reading.lastIndexOf(QLatin1Char(' '));
        if (blank <= 0 || blank == reading.size() - 1) {
            continue;
        }
        const QStringList seconds = fields[6].split(QLatin1Char('.'));
        const int ms =
            seconds.size() > 1 ? seconds[1].leftJustified(3, QLatin1Char('0'), true).toInt() : 0;
        const QDate date(fields[1].toInt(), fields[2].toInt(), fields[3].toInt());
        const QTime time(fields[4].toInt(), fields[5].toInt(), seconds[0].toInt(), ms);
        MeasurementData record;
        record.value = reading.left(blank).toDouble();
        record.unit = reading.mid(blank + 1);
        record.time = QDateTime(date, time, Qt::LocalTime);
        const QDateTime earlier = record.time.addSecs(-3600);
        if (earlier.time() == time) {
            record.time = earlier;
        }
        record.channel = fields[7].toInt();
        record.alarm = fields[8].toInt();
        record.valid = true;
        if (date.isValid() && time.isValid() && record.time.isValid()) {
            batch.append(record);
        }
    }
    return batch;
}

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool same(const MeasurementData& a, const MeasurementData& b)
{
    return sameBits(a.value, b.value) && a.unit == b.unit && a.time == b.time &&
           a.time.timeSpec() == b.time.timeSpec() && a.channel == b.channel && a.alarm == b.alarm &&
           a.valid == b.valid;
}

bool same(const QList<MeasurementData>& a, const QList<MeasurementData>& b)
{
    return a.size() == b.size() &&
           std::equal(a.cbegin(), a.cend(), b.cbegin(),
                      [](const MeasurementData& left, const MeasurementData& right) {
                          return same(left, right);
                      });
}

/// Decodes a record whose unit needs more memory than the process may have. Runs in a process of
/// its own; true if that gave exactly one warning and an invalid record.
bool decodesOutOfMemory()
{
    constexpr int kUnitLength = 64 * 1024 * 1024;
    constexpr rlim_t kSpareBytes = 32 * 1024 * 1024;
    QStringList fields = fieldsOf(kGoodRecord);
    fields[0] = QStringLiteral("+1.5 ") + QString(kUnitLength, QLatin1Char('V'));

    QFile statistics(QStringLiteral("/proc/self/statm"));
    if (!statistics.open(QIODevice::ReadOnly)) {
        return false;
    }
    const auto pages = statistics.readAll().split(' ').constFirst().toULongLong();
    const rlim_t limit = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + kSpareBytes;
    const rlimit addressSpace{limit, limit};
    if (setrlimit(RLIMIT_AS, &addressSpace) != 0) {
        return false;
    }
    const LogCapture log;
    const MeasurementData record = decodeRecord(fields);
    return !record.valid &&
           log.lines() == LogCapture::warnings({QStringLiteral("解析数据时发生错误")});
}

} // namespace

class TestRecordDecoder : public QObject
{
    Q_OBJECT

private slots:
    void defaultRecordIsInvalid();
    void batchTravelsAsMetaType();
    void emptyReplyGivesEmptyBatchWithoutWarning();
    void recordBehindHeaderIsDecoded();
    void recordsKeepTheOrderOfTheReply();
    void incompleteTailIsDropped_data();
    void incompleteTailIsDropped();
    void emptyPartsAreDropped();
    void headerIsDropped_data();
    void headerIsDropped();
    void fractionOfSecondsGivesMilliseconds_data();
    void fractionOfSecondsGivesMilliseconds();
    void impossibleTimeIsSkippedWithWarnings_data();
    void impossibleTimeIsSkippedWithWarnings();
    void textInAFieldReadsAsZero();
    void readingWithoutNumberAndUnitIsRefused_data();
    void readingWithoutNumberAndUnitIsRefused();
    void valueAndUnitAreSplitAtTheLastBlank_data();
    void valueAndUnitAreSplitAtTheLastBlank();
    void wrongFieldCountIsRefused_data();
    void wrongFieldCountIsRefused();
    void failingAllocationCostsOnlyTheRecord();
    void hourThatTheZoneSkipsIsDropped();
    void hourThatTheZoneRepeatsIsTheFirst_data();
    void hourThatTheZoneRepeatsIsTheFirst();
    void eachZoneRepeatsItsFirstMoment_data();
    void eachZoneRepeatsItsFirstMoment();
    void numbersReadAsQtReadsThem();
    void damagedRepliesDecodeAsToldPlainly();
    void threadDecodesLikeTheFreeFunctions();
};

void TestRecordDecoder::defaultRecordIsInvalid()
{
    const MeasurementData record;
    QVERIFY(!record.valid);
    QVERIFY(record.unit.isEmpty());
    QVERIFY(record.time.isNull());
}

void TestRecordDecoder::batchTravelsAsMetaType()
{
    MeasurementData record;
    record.channel = 101;
    const QVariant one = QVariant::fromValue(record);
    const QVariant batch = QVariant::fromValue(QList<MeasurementData>{record, record});
    QCOMPARE(one.value<MeasurementData>().channel, 101);
    QCOMPARE(batch.value<QList<MeasurementData>>().size(), 2);
    QCOMPARE(QString::fromLatin1(batch.typeName()), QStringLiteral("QList<MeasurementData>"));
}

void TestRecordDecoder::emptyReplyGivesEmptyBatchWithoutWarning()
{
    const LogCapture log;
    QVERIFY(decodeResponse(QString()).isEmpty());
    QVERIFY(decodeResponse(QStringLiteral("#10")).isEmpty());
    QVERIFY(decodeResponse(QStringLiteral(",,")).isEmpty());
    QCOMPARE(log.lines(), QStringList());
}

void TestRecordDecoder::recordBehindHeaderIsDecoded()
{
    const LogCapture log;
    const auto batch = decodeResponse(QStringLiteral("#3123+1.000E+00 V,2024,1,2,3,4,5.6,101,0"));
    QCOMPARE(batch.size(), 1);
    const MeasurementData& record = batch.first();
    QCOMPARE(record.value, 1.0);
    QCOMPARE(record.unit, QStringLiteral("V"));
    QCOMPARE(record.time, QDateTime(QDate(2024, 1, 2), QTime(3, 4, 5, 600), Qt::LocalTime));
    QCOMPARE(record.time.timeSpec(), Qt::LocalTime);
    QCOMPARE(record.channel, 101);
    QCOMPARE(record.alarm, 0);
    QVERIFY(record.valid);
    QCOMPARE(log.lines(), QStringList());
}

void TestRecordDecoder::recordsKeepTheOrderOfTheReply()
{
    const auto batch =
        decodeResponse(QStringLiteral("#2100-2.5E-03 °C,2024,12,31,23,59,59.999,305,1,"
                                      "+7 Vdc,2025,1,1,0,0,0,101,12"));
    QCOMPARE(batch.size(), 2);
    QCOMPARE(batch[0].value, -0.0025);
    QCOMPARE(batch[0].unit, QStringLiteral("°C"));
    QCOMPARE(batch[0].time, QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59, 999)));
    QCOMPARE(batch[0].channel, 305);
    QCOMPARE(batch[0].alarm, 1);
    QCOMPARE(batch[1].value, 7.0);
    QCOMPARE(batch[1].unit, QStringLiteral("Vdc"));
    QCOMPARE(batch[1].time, QDateTime(QDate(2025, 1, 1), QTime(0, 0)));
    QCOMPARE(batch[1].channel, 101);
    QCOMPARE(batch[1].alarm, 12);
}

void TestRecordDecoder::incompleteTailIsDropped_data()
{
    QTest::addColumn<int>("fieldCount");
    QTest::addColumn<int>("records");
    QTest::addColumn<QStringList>("warnings");
    QTest::newRow("one field") << 1 << 0 << QStringList{kIncomplete};
    QTest::newRow("eight fields") << 8 << 0 << QStringList{kIncomplete};
    QTest::newRow("nine fields") << 9 << 1 << QStringList();
    QTest::newRow("eighteen fields") << 18 << 2 << QStringList();
    QTest::newRow("twenty fields") << 20 << 2 << QStringList{kIncomplete};
}

void TestRecordDecoder::incompleteTailIsDropped()
{
    QFETCH(const int, fieldCount);
    QFETCH(const int, records);
    QFETCH(const QStringList, warnings);
    QStringList fields;
    while (fields.size() < fieldCount) {
        fields += fieldsOf(kGoodRecord);
    }
    fields = fields.mid(0, fieldCount);
    const LogCapture log;
    QCOMPARE(decodeResponse(fields.join(QLatin1Char(','))).size(), records);
    QCOMPARE(log.lines(), LogCapture::warnings(warnings));
}

void TestRecordDecoder::emptyPartsAreDropped()
{
    const LogCapture log;
    const auto batch = decodeResponse(QStringLiteral(",+1 V,,2024,1,2,3,4,5,101,0,"));
    QCOMPARE(batch.size(), 1);
    QCOMPARE(batch.first().channel, 101);
    QCOMPARE(log.lines(), QStringList());
}

void TestRecordDecoder::headerIsDropped_data()
{
    QTest::addColumn<QString>("reading");
    QTest::addColumn<double>("value");
    QTest::newRow("none") << QStringLiteral("+1 V") << 1.0;
    QTest::newRow("one digit") << QStringLiteral("#0+1 V") << 1.0;
    QTest::newRow("ten digits") << QStringLiteral("#9123456789-1 V") << -1.0;
    QTest::newRow("an eleventh digit belongs to the value")
        << QStringLiteral("#12345678907 V") << 7.0;
    QTest::newRow("digits of a value without a sign are taken")
        << QStringLiteral("#2123.5 V") << 0.5;
    QTest::newRow("no digit, no header") << QStringLiteral("#+1 V") << 0.0;
    QTest::newRow("only at the start") << QStringLiteral(" #11+1 V") << 0.0;
    QTest::newRow("only one") << QStringLiteral("#11#11+1 V") << 0.0;
    QTest::newRow("digits of other scripts") << QStringLiteral("#\u0661\u0662+1 V") << 1.0;
}

void TestRecordDecoder::headerIsDropped()
{
    QFETCH(const QString, reading);
    QFETCH(const double, value);
    const QString reply = reading + QStringLiteral(",2024,1,2,3,4,5,101,0");
    const auto batch = decodeResponse(reply);
    QCOMPARE(batch.size(), 1);
    QCOMPARE(batch.first().value, value);
    QVERIFY(same(batch, plainlyDecoded(reply)));
}

void TestRecordDecoder::fractionOfSecondsGivesMilliseconds_data()
{
    QTest::addColumn<QString>("seconds");
    QTest::addColumn<QTime>("time");
    const auto at = [](int second, int ms) { return QTime(3, 4, second, ms); };
    QTest::newRow("none") << QStringLiteral("5") << at(5, 0);
    QTest::newRow("one digit") << QStringLiteral("5.1") << at(5, 100);
    QTest::newRow("two digits") << QStringLiteral("5.12") << at(5, 120);
    QTest::newRow("three digits") << QStringLiteral("5.123") << at(5, 123);
    QTest::newRow("cut, not rounded") << QStringLiteral("5.12399") << at(5, 123);
    QTest::newRow("five digits") << QStringLiteral("5.12345") << at(5, 123);
    QTest::newRow("point alone") << QStringLiteral("5.") << at(5, 0);
    QTest::newRow("leading zero") << QStringLiteral("05.006") << at(5, 6);
    QTest::newRow("nothing in front of the point") << QStringLiteral(".5") << at(0, 500);
    QTest::newRow("a third part is ignored") << QStringLiteral("5.1.9") << at(5, 100);
    QTest::newRow("a fraction that is no number") << QStringLiteral("5.x") << at(5, 0);
}

void TestRecordDecoder::fractionOfSecondsGivesMilliseconds()
{
    QFETCH(const QString, seconds);
    QFETCH(const QTime, time);
    QStringList fields = fieldsOf(kGoodRecord);
    fields[6] = seconds;
    const MeasurementData record = decodeRecord(fields);
    QVERIFY(record.valid);
    QCOMPARE(record.time.time(), time);
    QCOMPARE(record.time.date(), QDate(2024, 1, 2));
}

void TestRecordDecoder::impossibleTimeIsSkippedWithWarnings_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("text");
    QTest::newRow("year 0") << 1 << QStringLiteral("0");
    QTest::newRow("month 13") << 2 << QStringLiteral("13");
    QTest::newRow("month 0") << 2 << QStringLiteral("0");
    QTest::newRow("day 32") << 3 << QStringLiteral("32");
    QTest::newRow("hour 24") << 4 << QStringLiteral("24");
    QTest::newRow("hour 25") << 4 << QStringLiteral("25");
    QTest::newRow("minute 60") << 5 << QStringLiteral("60");
    QTest::newRow("second 60") << 6 << QStringLiteral("60.000");
    QTest::newRow("second below 0") << 6 << QStringLiteral("-1");
    QTest::newRow("millisecond below 0") << 6 << QStringLiteral("5.-1");
}

void TestRecordDecoder::impossibleTimeIsSkippedWithWarnings()
{
    QFETCH(const int, field);
    QFETCH(const QString, text);
    QStringList fields = fieldsOf(kGoodRecord);
    fields[field] = text;
    const QString bad = fields.join(QLatin1Char(','));
    const LogCapture log;
    const auto batch =
        decodeResponse(QStringList{kGoodRecord, bad, kGoodRecord}.join(QLatin1Char(',')));
    QCOMPARE(batch.size(), 2);
    QCOMPARE(log.lines(), LogCapture::warnings({kBadTime, kSkipped}));
    QVERIFY(!decodeRecord(fields).valid);
}

void TestRecordDecoder::textInAFieldReadsAsZero()
{
    const MeasurementData record =
        decodeRecord({QStringLiteral("OVLD V"), QStringLiteral("2024"), QStringLiteral("1"),
                      QStringLiteral("2"), QStringLiteral("noon"), QStringLiteral(""),
                      QStringLiteral("s"), QStringLiteral("99999999999"), QStringLiteral("0x1")});
    QVERIFY(record.valid);
    QCOMPARE(record.value, 0.0);
    QCOMPARE(record.time, QDateTime(QDate(2024, 1, 2), QTime(0, 0)));
    QCOMPARE(record.channel, 0);
    QCOMPARE(record.alarm, 0);
}

void TestRecordDecoder::readingWithoutNumberAndUnitIsRefused_data()
{
    QTest::addColumn<QString>("reading");
    QTest::addColumn<QString>("warning");
    QTest::newRow("no blank") << QStringLiteral("+1.0")
                              << QStringLiteral("Invalid voltage format: \"+1.0\"");
    QTest::newRow("unit missing") << QStringLiteral("+1.0 ")
                                  << QStringLiteral("Invalid voltage format: \"+1.0 \"");
    QTest::newRow("number missing")
        << QStringLiteral("  V") << QStringLiteral("Invalid voltage format: \"  V\"");
    QTest::newRow("only blanks") << QStringLiteral("  ")
                                 << QStringLiteral("Invalid voltage format: \"  \"");
    QTest::newRow("a tab is no blank")
        << QStringLiteral("1\tV") << QStringLiteral("Invalid voltage format: \"1\\tV\"");
}

void TestRecordDecoder::readingWithoutNumberAndUnitIsRefused()
{
    QFETCH(const QString, reading);
    QFETCH(const QString, warning);
    QStringList fields = fieldsOf(kGoodRecord);
    fields[0] = reading;
    const LogCapture log;
    const MeasurementData record = decodeRecord(fields);
    QVERIFY(!record.valid);
    QVERIFY(record.unit.isEmpty());
    QVERIFY(record.time.isNull());
    QCOMPARE(log.lines(), LogCapture::warnings({warning}));
    QVERIFY(decodeResponse(fields.join(QLatin1Char(','))).isEmpty());
    QCOMPARE(log.lines(), LogCapture::warnings({warning, warning, kSkipped}));
}

void TestRecordDecoder::valueAndUnitAreSplitAtTheLastBlank_data()
{
    QTest::addColumn<QString>("reading");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("unit");
    QTest::newRow("plain") << QStringLiteral("-1.25E+01 Ohm") << -12.5 << QStringLiteral("Ohm");
    QTest::newRow("blanks around") << QStringLiteral("  3 s ") << 3.0 << QStringLiteral("s");
    QTest::newRow("two numbers are none") << QStringLiteral("1 2 V") << 0.0 << QStringLiteral("V");
    QTest::newRow("two blanks between") << QStringLiteral("4  V") << 4.0 << QStringLiteral("V");
    QTest::newRow("no number") << QStringLiteral("x V") << 0.0 << QStringLiteral("V");
    QTest::newRow("overload") << QStringLiteral("+9.9E+37 V") << 9.9e37 << QStringLiteral("V");
    QTest::newRow("quoted unit") << QStringLiteral("1 \"#C\"") << 1.0 << QStringLiteral("\"#C\"");
}

void TestRecordDecoder::valueAndUnitAreSplitAtTheLastBlank()
{
    QFETCH(const QString, reading);
    QFETCH(const double, value);
    QFETCH(const QString, unit);
    QStringList fields = fieldsOf(kGoodRecord);
    fields[0] = reading;
    const MeasurementData record = decodeRecord(fields);
    QVERIFY(record.valid);
    QCOMPARE(record.value, value);
    QCOMPARE(record.unit, unit);
}

void TestRecordDecoder::wrongFieldCountIsRefused_data()
{
    QTest::addColumn<int>("fieldCount");
    QTest::addColumn<QString>("warning");
    QTest::newRow("none") << 0 << QStringLiteral("字段数量不正确，预期9个，实际 0 个");
    QTest::newRow("eight") << 8 << QStringLiteral("字段数量不正确，预期9个，实际 8 个");
    QTest::newRow("ten") << 10 << QStringLiteral("字段数量不正确，预期9个，实际 10 个");
}

void TestRecordDecoder::wrongFieldCountIsRefused()
{
    QFETCH(const int, fieldCount);
    QFETCH(const QString, warning);
    QStringList fields = fieldsOf(kGoodRecord);
    fields << QStringLiteral("0");
    const LogCapture log;
    QVERIFY(!decodeRecord(fields.mid(0, fieldCount)).valid);
    QCOMPARE(log.lines(), LogCapture::warnings({warning}));
}

void TestRecordDecoder::failingAllocationCostsOnlyTheRecord()
{
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        _exit(decodesOutOfMemory() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), EXIT_SUCCESS);
}

void TestRecordDecoder::hourThatTheZoneSkipsIsDropped()
{
    const TimeZone zone(kCentralEurope);
    const QStringList records{QStringLiteral("+1 V,2024,3,31,1,59,59.999,101,0"),
                              QStringLiteral("+2 V,2024,3,31,2,30,0.000,101,0"),
                              QStringLiteral("+3 V,2024,3,31,3,0,0.000,101,0")};
    const LogCapture log;
    const auto batch = decodeResponse(records.join(QLatin1Char(',')));
    QCOMPARE(batch.size(), 2);
    QCOMPARE(batch[0].time.toMSecsSinceEpoch(), Q_INT64_C(1711846799999));
    QCOMPARE(batch[1].time.toMSecsSinceEpoch(), Q_INT64_C(1711846800000));
    QCOMPARE(log.lines(), LogCapture::warnings({kBadTime, kSkipped}));
}

void TestRecordDecoder::hourThatTheZoneRepeatsIsTheFirst_data()
{
    QTest::addColumn<int>("monthBefore");
    QTest::addColumn<QTime>("time");
    QTest::addColumn<qint64>("moment");
    for (const int month : {7, 12}) {
        const auto add = [month](int hour, qint64 moment) {
            QTest::addRow("%d h after month %d", hour, month) << month << QTime(hour, 30) << moment;
        };
        add(1, Q_INT64_C(1729985400000));
        add(2, Q_INT64_C(1729989000000));
        add(3, Q_INT64_C(1729996200000));
    }
}

void TestRecordDecoder::hourThatTheZoneRepeatsIsTheFirst()
{
    QFETCH(const int, monthBefore);
    QFETCH(const QTime, time);
    QFETCH(const qint64, moment);
    const TimeZone zone(kCentralEurope);
    // The C library's choice follows the season of what it converted last.
    QVERIFY(QDateTime(QDate(2024, monthBefore, 1), QTime(12, 0)).isValid());
    const auto batch = decodeResponse(QStringLiteral("+1 V,2024,10,27,%1,30,0,101,0,"
                                                     "+1 V,2024,12,1,12,0,0,101,0,"
                                                     "+1 V,2024,10,27,%1,45,0,101,0")
                                          .arg(time.hour()));
    QCOMPARE(batch.size(), 3);
    QCOMPARE(batch[0].time.toMSecsSinceEpoch(), moment);
    QCOMPARE(batch[0].time.time(), time);
    QCOMPARE(batch[0].time.timeSpec(), Qt::LocalTime);
    constexpr qint64 kQuarterMs = 15 * 60 * 1000;
    QCOMPARE(batch[2].time.toMSecsSinceEpoch(), moment + kQuarterMs);
    QCOMPARE(batch[2].time.timeSpec(), Qt::LocalTime);
}

void TestRecordDecoder::eachZoneRepeatsItsFirstMoment_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("unique");
    QTest::addColumn<QString>("repeated");
    QTest::addColumn<qint64>("moment");
    // The rules of Ireland, Lord Howe, the Troll station, and Newfoundland until 2011.
    QTest::newRow("the winter counts as summer time")
        << QByteArray("IST-1GMT0,M10.5.0,M3.5.0/1") << QStringLiteral("2024,10,27,0,59,59")
        << QStringLiteral("2024,10,27,1,30,0") << Q_INT64_C(1729989000000);
    QTest::newRow("back by half an hour")
        << QByteArray("<+1030>-10:30<+11>-11,M10.1.0,M4.1.0") << QStringLiteral("2024,4,7,1,29,59")
        << QStringLiteral("2024,4,7,1,45,0") << Q_INT64_C(1712414700000);
    QTest::newRow("back by two hours, first of them")
        << QByteArray("<+00>0<+02>-2,M3.5.0/1,M10.5.0/3") << QStringLiteral("2024,10,27,3,0,0")
        << QStringLiteral("2024,10,27,1,30,0") << Q_INT64_C(1729985400000);
    QTest::newRow("back by two hours, second of them")
        << QByteArray("<+00>0<+02>-2,M3.5.0/1,M10.5.0/3") << QStringLiteral("2024,10,27,0,59,59")
        << QStringLiteral("2024,10,27,2,30,0") << Q_INT64_C(1729989000000);
    QTest::newRow("back over midnight, day before")
        << QByteArray("NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01") << QStringLiteral("2010,11,6,23,0,59")
        << QStringLiteral("2010,11,6,23,30,0") << Q_INT64_C(1289095200000);
    QTest::newRow("back over midnight, within the hour that has unique minutes")
        << QByteArray("NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01") << QStringLiteral("2010,11,7,0,1,0")
        << QStringLiteral("2010,11,7,0,0,30") << Q_INT64_C(1289097030000);
}

void TestRecordDecoder::eachZoneRepeatsItsFirstMoment()
{
    QFETCH(const QByteArray, zone);
    QFETCH(const QString, unique);
    QFETCH(const QString, repeated);
    QFETCH(const qint64, moment);
    const TimeZone local(zone.constData());
    const QString uniqueRecord = QStringLiteral("+1 V,%1,101,0").arg(unique);
    const QString repeatedRecord = QStringLiteral("+1 V,%1,102,0").arg(repeated);
    for (const int month : {1, 7}) {
        // The C library's choice follows the season of what it converted last, the decoder's what it
        // knows of the record before.
        const QString season = QStringLiteral("+1 V,2024,%1,1,12,0,0,103,0").arg(month);
        for (const QStringList& before :
             {QStringList{uniqueRecord, season}, QStringList{season, uniqueRecord}}) {
            const QStringList records = before + QStringList{repeatedRecord, repeatedRecord};
            const auto batch = decodeResponse(records.join(QLatin1Char(',')));
            QCOMPARE(batch.size(), 4);
            for (const auto& record : batch.mid(2)) {
                QCOMPARE(record.time.toMSecsSinceEpoch(), moment);
                QCOMPARE(record.time.toString(QStringLiteral("yyyy,M,d,h,m,s")), repeated);
            }
        }
    }
}

void TestRecordDecoder::numbersReadAsQtReadsThem()
{
    const QStringList literals{QStringLiteral("0"),
                               QStringLiteral("-0"),
                               QStringLiteral("+0.0E+00"),
                               QStringLiteral("1."),
                               QStringLiteral(".5"),
                               QStringLiteral("."),
                               QStringLiteral("+"),
                               QStringLiteral("--1"),
                               QStringLiteral("1e"),
                               QStringLiteral("1e+"),
                               QStringLiteral("1e5x"),
                               QStringLiteral("1e400"),
                               QStringLiteral("1e-400"),
                               QStringLiteral("1e22"),
                               QStringLiteral("1e23"),
                               QStringLiteral("4.9E-324"),
                               QStringLiteral("inf"),
                               QStringLiteral("-nan"),
                               QStringLiteral("1,5"),
                               QStringLiteral("1_5"),
                               QStringLiteral("0x10"),
                               QStringLiteral("٣"),
                               QStringLiteral("999999999999999"),
                               QStringLiteral("9007199254740993"),
                               QStringLiteral("123456789.123456789"),
                               QStringLiteral("0.000000000000000000000001"),
                               QStringLiteral("1E0000000000001"),
                               QStringLiteral("1.5e-2147483648"),
                               QStringLiteral("1e2147483648"),
                               QStringLiteral("1e99999999999999999999")};
    std::mt19937 random(20240102);
    QStringList numbers = literals;
    constexpr int kRandomNumbers = 20000;
    std::uniform_real_distribution<double> exponent(-40.0, 40.0);
    std::uniform_int_distribution<int> precision(1, 17);
    for (int i = 0; i < kRandomNumbers; ++i) {
        const double value = std::pow(10.0, exponent(random)) * (i % 2 ? 1 : -1);
        numbers << QString::number(value, i % 3 ? 'E' : 'g', precision(random));
    }
    for (const QString& number : qAsConst(numbers)) {
        QStringList fields = fieldsOf(kGoodRecord);
        fields[0] = number + QStringLiteral(" V");
        const double value = decodeRecord(fields).value;
        QVERIFY2(sameBits(value, number.toDouble()), qPrintable(number));
    }
    for (const QString& number :
         {QStringLiteral("+12"), QStringLiteral(" 12 "), QStringLiteral("-0"),
          QStringLiteral("1e1"), QStringLiteral("2147483647"), QStringLiteral("-2147483648"),
          QStringLiteral("2147483648"), QStringLiteral("000000000012"), QStringLiteral("+"),
          QStringLiteral("٣"), QStringLiteral("999999999"), QStringLiteral("1000000000")}) {
        QStringList fields = fieldsOf(kGoodRecord);
        fields[7] = number;
        fields[8] = number;
        const MeasurementData record = decodeRecord(fields);
        QCOMPARE(record.channel, number.toInt());
        QCOMPARE(record.alarm, number.toInt());
    }
}

void TestRecordDecoder::damagedRepliesDecodeAsToldPlainly()
{
    const TimeZone zone(kCentralEurope);
    const LogCapture log;
    std::mt19937 random(4070);
    const QString alphabet = QStringLiteral("0123456789+-.eE #,,, VxX\t°\u0661");
    const auto pick = [&random](int count) {
        return std::uniform_int_distribution<int>(0, count - 1)(random);
    };
    int decoded = 0;
    constexpr int kReplies = 20000;
    for (int i = 0; i < kReplies; ++i) {
        QString reply = QStringLiteral("#3%1").arg(100 + pick(900));
        const int records = 1 + pick(3);
        for (int r = 0; r < records; ++r) {
            reply += (r ? QStringLiteral(",") : QString()) +
                     QStringLiteral("%1E-02 V,%2,%3,%4,%5,%6,%7.%8,%9")
                         .arg(QString::number(pick(2000) - 1000), QString::number(2020 + pick(10)),
                              QString::number(1 + pick(13)), QString::number(1 + pick(31)),
                              QString::number(pick(26)), QString::number(pick(61)),
                              QString::number(pick(61)), QString::number(pick(1000)),
                              QString::number(101 + pick(20))) +
                     QStringLiteral(",0");
        }
        for (int damage = pick(4); damage > 0; --damage) {
            reply[pick(reply.size())] = alphabet[pick(alphabet.size())];
        }
        const auto batch = decodeResponse(reply);
        QVERIFY2(same(batch, plainlyDecoded(reply)), qPrintable(reply));
        decoded += batch.size();
    }
    QVERIFY(decoded > kReplies / 2);
    QVERIFY(log.lines().size() > kReplies / 10);
}

void TestRecordDecoder::threadDecodesLikeTheFreeFunctions()
{
    const ReadData thread;
    const QString reply = QStringLiteral("#249") + kGoodRecord;
    QVERIFY(same(thread.parseResponse(reply), decodeResponse(reply)));
    QCOMPARE(thread.parseResponse(reply).size(), 1);
    const QStringList fields = fieldsOf(kGoodRecord);
    QVERIFY(same(thread.parseRecord(fields), decodeRecord(fields)));
    QVERIFY(thread.parseRecord(fields).valid);
}

SCN_TEST(TestRecordDecoder, QCoreApplication)
#include "test_recorddecoder.moc"
