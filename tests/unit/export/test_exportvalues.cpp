#include "dayfilewriter.h"
#include "exportscene.h"
#include "randomcases.h"
#include "skippedwaits.h"
#include "support/testprogram.h"
#include "timescene.h"

#include <QLocale>
#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

namespace {

constexpr int kRandomValues = 20000;
constexpr int kTitleLines = 6;
constexpr const char* kDay = "20260112";

double valueOfBits(quint64 bits)
{
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

QVector<double> specialValues()
{
    using Limits = std::numeric_limits<double>;
    QVector<double> values{0.0,
                           -0.0,
                           1.0,
                           9.9E37,
                           1E-99,
                           1E100,
                           0.1,
                           1.0 / 3.0,
                           9.9999999999999995,
                           999999999999999.95,
                           9007199254740993.0,
                           Limits::max(),
                           Limits::min(),
                           Limits::denorm_min(),
                           valueOfBits(0x000fffffffffffff), // the largest of the subnormals
                           valueOfBits(0x0000000012345678),
                           Limits::epsilon(),
                           Limits::infinity()};
    for (int i = values.size() - 1; i >= 0; --i) {
        values.append(-values.at(i));
    }
    return values;
}

/// Whether a value has exactly one digit more than the text, a five. Qt then rounds away from zero,
/// the C library to the even digit.
bool isHalfway(double value)
{
    std::array<char, 64> digits{};
    std::snprintf(digits.data(), digits.size(), "%.40E", std::abs(value));
    return std::isfinite(value) &&
           std::string(digits.data()).substr(17, 25) == "5000000000000000000000000";
}

QVector<QPointF> samplesOf(const QVector<double>& values)
{
    QVector<QPointF> samples;
    const qint64 start = localTime("2026-01-12 06:00:00.000");
    for (const double value : values) {
        samples.append(QPointF(static_cast<double>(start + samples.size() * 10), value));
    }
    return samples;
}

/// The sqlite3 program's answer.
QByteArray askSqlite(const QString& path, const QString& sql)
{
    QProcess program;
    program.start(text("sqlite3"), {path, sql});
    if (!program.waitForFinished() || program.exitCode() != 0) {
        qFatal("sqlite3: %s", program.readAllStandardError().constData());
    }
    return program.readAllStandardOutput();
}

} // namespace

/// Every stored value is exported as the C library writes it.
class TestExportValues : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void valuesComeOutAsStored_data();
    void valuesComeOutAsStored();
    void countsAreThoseOfTheFiles();
    void localesChangeNothing_data();
    void localesChangeNothing();

private:
    static void compareValues(const QVector<double>& values, const QByteArray& part);
    const SkippedWaits m_waits;
};

void TestExportValues::cleanup()
{
    QLocale::setDefault(QLocale::c());
    std::setlocale(LC_ALL, "C");
}

void TestExportValues::compareValues(const QVector<double>& values, const QByteArray& part)
{
    const QList<QByteArray> lines = part.split('\n').mid(kTitleLines);
    QCOMPARE(lines.size(), values.size() + 1); // the last line ends as well
    for (int i = 0; i < values.size(); ++i) {
        const QByteArray cell = lines.at(i).mid(lines.at(i).lastIndexOf(',') + 1);
        // The store keeps no negative zero.
        const double stored = values.at(i) == 0.0 ? 0.0 : values.at(i);
        QCOMPARE(cell, QString::number(stored, 'E', 15).toLatin1());
        if (!isHalfway(stored)) {
            QCOMPARE(cell, plainValue(stored));
        }
    }
}

void TestExportValues::valuesComeOutAsStored_data()
{
    QTest::addColumn<QVector<double>>("values");
    QTest::newRow("special") << specialValues();
    QRandomGenerator random(randomSeed());
    QVector<double> bits;
    QVector<double> readings;
    while (bits.size() < kRandomValues) {
        const double value = valueOfBits(random.generate64());
        if (!std::isnan(value)) { // is no reading, and not stored
            bits.append(value);
        }
        readings.append((random.generateDouble() - 0.5) * std::pow(10.0, random.bounded(40) - 20));
    }
    QVector<double> halfway;
    for (int places = 1; places <= 24; ++places) {
        for (int i = 0; i < 2000; ++i) {
            const double scale = std::ldexp(1.0, -places);
            const auto odd = static_cast<double>((random.generate64() >> (11 + i % 53)) | 1);
            halfway.append(odd * scale);
            halfway.append(-odd * scale);
        }
    }
    QTest::newRow("halfway") << halfway;
    QTest::newRow("random bits") << bits;
    QTest::newRow("random readings") << readings;
}

void TestExportValues::valuesComeOutAsStored()
{
    QFETCH(QVector<double>, values);
    ExportScene scene;
    scene.know({{1, text("101(V)")}});
    scene.addDay(kDay, {{1, text("101(V)"), samplesOf(values)}});
    const auto outcome = runExport(scene.order({1}, localTime("2026-01-12 00:00:00.000"),
                                               localTime("2026-01-12 23:59:59.000")));
    QCOMPARE(outcome.result, ExportSuccess);
    compareValues(values, partsIn(scene.outputDirectory()).value(1));
}

/// Rows and cells against another program's counts in the source file.
void TestExportValues::countsAreThoseOfTheFiles()
{
    constexpr int kCurves = 7;
    ExportScene scene;
    QMap<int, QString> names;
    QVector<DayCurve> curves;
    QRandomGenerator random(randomSeed());
    const qint64 first = localTime("2026-01-12 11:30:00.000");
    for (int id = 1; id <= kCurves; ++id) {
        names.insert(id, QString::number(100 + id) + text("(V)"));
        curves.append({id, names.value(id), samplesFrom(first, 1 + random.bounded(4000))});
    }
    scene.know(names);
    scene.addDay(kDay, curves);
    const qint64 start = first + random.bounded(60) * 1000;
    const qint64 end = start + random.bounded(3600) * 1000;
    const auto outcome = runExport(scene.order(names.keys(), start, end));
    int longest = 0;
    int stored = 0;
    for (int id = 1; id <= kCurves; ++id) {
        int count = 0;
        const QByteArray tables =
            askSqlite(scene.store().path(kDay),
                      text("SELECT table_name FROM batch_metadata WHERE curve_id = %1").arg(id));
        for (const QByteArray& table : tables.split('\n')) {
            if (table.isEmpty()) {
                continue;
            }
            count += askSqlite(scene.store().path(kDay),
                               text("SELECT count(*) FROM %1 WHERE timestamp >= %2 AND "
                                    "timestamp <= %3")
                                   .arg(QString::fromLatin1(table), QString::number(start),
                                        QString::number(end)))
                         .trimmed()
                         .toInt();
        }
        longest = std::max(longest, count);
        stored += count;
    }
    if (longest == 0) {
        QCOMPARE(outcome.result, ExportNoData);
        return;
    }
    QCOMPARE(outcome.result, ExportSuccess);
    const QList<QByteArray> lines = partsIn(scene.outputDirectory()).value(1).split('\n');
    QCOMPARE(lines.size(), kTitleLines + longest + 1);
    int filled = 0;
    for (int row = 0; row < longest; ++row) {
        const QList<QByteArray> cells = lines.at(kTitleLines + row).split(',');
        QCOMPARE(cells.size(), 2 + kCurves);
        QCOMPARE(cells.first(), QByteArray::number(row + 1));
        for (int id = 1; id <= kCurves; ++id) {
            filled += cells.at(1 + id).isEmpty() ? 0 : 1;
        }
    }
    QCOMPARE(filled, stored);
}

void TestExportValues::localesChangeNothing_data()
{
    QTest::addColumn<QString>("locale");
    for (const char* locale : {"C", "de_DE", "zh_CN", "fr_FR", "ar_EG", "fa_IR", "hi_IN"}) {
        QTest::newRow(locale) << text(locale);
    }
}

void TestExportValues::localesChangeNothing()
{
    QFETCH(QString, locale);
    ExportScene scene;
    scene.know({{1, text("101(V)")}, {1234, text("102(V)")}});
    scene.addDay(
        kDay,
        {{1, text("101(V)"), samplesFrom(localTime("2026-01-12 09:08:07.000"), 1500)},
         {1234, text("102(V)"), samplesFrom(localTime("2026-01-12 09:08:07.006"), 2345, 1234)}});
    ExportOrder order = scene.order({1, 1234}, localTime("2026-01-12 00:00:00.000"),
                                    localTime("2026-01-12 23:59:59.000"));
    const QVector<QByteArray> expected = scene.expectedParts(order);
    // The C library's locale is set if the system has it.
    std::setlocale(LC_ALL, (locale + text(".UTF-8")).toLatin1().constData());
    QLocale::setDefault(QLocale(locale));
    const auto outcome = runExport(order);
    QCOMPARE(outcome.result, ExportSuccess);
    QCOMPARE(partsIn(scene.outputDirectory()).value(1), expected.first());
}

SCN_TEST(TestExportValues, QCoreApplication)
#include "test_exportvalues.moc"
