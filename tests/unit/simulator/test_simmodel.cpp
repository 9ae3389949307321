#include "model/calendar.h"
#include "model/module.h"
#include "model/readingmemory.h"
#include "simbench.h"
#include "support/testprogram.h"

#include <QtTest>

using namespace scnsim;

/// The parts of the model that work on their own.
class TestSimModel : public QObject
{
    Q_OBJECT

private slots:
    void calendarGoesBothWays_data();
    void calendarGoesBothWays();
    void calendarAgreesWithEachDayOfACentury();
    void datesAreChecked();
    void modulesHaveTheirChannels_data();
    void modulesHaveTheirChannels();
    void memoryTakesFromTheFront();
    void foldersKnowOnlyWhatTheyMay_data();
    void foldersKnowOnlyWhatTheyMay();
};

void TestSimModel::calendarGoesBothWays_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("milliseconds");
    QTest::newRow("beginning") << QStringLiteral("2000,01,01,00,00,00.000") << qint64{0};
    QTest::newRow("before it") << QStringLiteral("1999,12,31,23,59,59.999") << qint64{-1};
    QTest::newRow("leap day") << QStringLiteral("2000,02,29,12,00,00.500")
                              << qint64{59} * 86400000 + 43200500;
    QTest::newRow("one year") << QStringLiteral("2001,01,01,00,00,00.000")
                              << qint64{366} * 86400000;
    QTest::newRow("no leap day in 2100")
        << QStringLiteral("2100,03,01,00,00,00.000") << qint64{36525 + 59} * 86400000;
}

void TestSimModel::calendarGoesBothWays()
{
    QFETCH(QString, text);
    QFETCH(qint64, milliseconds);
    const DateTime time = fromMilliseconds(milliseconds);
    QCOMPARE(shown(timeStampText(time)), text);
    QCOMPARE(qint64{toMilliseconds(time)}, milliseconds);
}

void TestSimModel::calendarAgreesWithEachDayOfACentury()
{
    const QDate first(2000, 1, 1);
    for (int day = 0; day < 36525; ++day) {
        const QDate date = first.addDays(day);
        const DateTime time = fromMilliseconds(qint64{day} * 86400000);
        QCOMPARE(QDate(time.year, time.month, time.day), date);
        QVERIFY(isValidDate(date.year(), date.month(), date.day()));
    }
}

void TestSimModel::datesAreChecked()
{
    QVERIFY(isValidDate(2024, 2, 29));
    QVERIFY(!isValidDate(2023, 2, 29));
    QVERIFY(!isValidDate(2024, 4, 31));
    QVERIFY(!isValidDate(2024, 13, 1));
    QVERIFY(!isValidDate(2024, 0, 1));
    QVERIFY(!isValidDate(1999, 1, 1));
    QVERIFY(!isValidDate(2100, 1, 1));
}

void TestSimModel::modulesHaveTheirChannels_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bank");
    QTest::addColumn<QString>("model");
    QTest::newRow("0") << 0 << 20 << 10 << QStringLiteral("SCN4000A");
    QTest::newRow("1") << 1 << 22 << 10 << QStringLiteral("SCN4001A");
    QTest::newRow("2") << 2 << 16 << 8 << QStringLiteral("SCN4002A");
    QTest::newRow("3") << 3 << 20 << 10 << QStringLiteral("SCN4003A");
    QTest::newRow("8") << 8 << 40 << 20 << QStringLiteral("SCN4008A");
    QTest::newRow("13") << 13 << 1 << 1 << QStringLiteral("SCN4013A");
    QTest::newRow("16") << 16 << 8 << 4 << QStringLiteral("SCN4016A");
    QTest::newRow("21") << 21 << 1 << 1 << QStringLiteral("SCN4021A");
}

void TestSimModel::modulesHaveTheirChannels()
{
    QFETCH(int, type);
    QTEST(module::channelCount(type), "channels");
    QTEST(module::bankSize(type), "bank");
    QTEST(shown(module::modelText(type)), "model");
}

void TestSimModel::memoryTakesFromTheFront()
{
    ReadingMemory memory(3);
    for (int channel = 101; channel <= 105; ++channel) {
        MemoryReading reading;
        reading.channel = channel;
        memory.store(reading);
    }
    QCOMPARE(memory.count(), std::size_t{3});
    QVERIFY(memory.takeLossNotice());
    QVERIFY(!memory.takeLossNotice());
    const std::vector<MemoryReading> taken = memory.take(2);
    QCOMPARE(taken.size(), std::size_t{2});
    QCOMPARE(taken[0].channel, 103);
    QCOMPARE(memory.take(9).size(), std::size_t{1});
    QCOMPARE(memory.take(9).size(), std::size_t{0});
    memory.store({});
    memory.clear();
    QCOMPARE(memory.count(), std::size_t{0});
}

void TestSimModel::foldersKnowOnlyWhatTheyMay_data()
{
    QTest::addColumn<QStringList>("known");
    const auto row = [](const char* folder, const char* known) {
        QTest::newRow(folder) << QString::fromLatin1(known).split(QLatin1Char(' '));
    };
    row("scpi", "scpi");
    row("model", "model");
    row("transport", "transport posix");
    row("dialogue", "dialogue model scpi");
    row("faults", "faults scpi");
}

void TestSimModel::foldersKnowOnlyWhatTheyMay()
{
    QFETCH(QStringList, known);
    const QDir folder(QStringLiteral(SCN_SOURCE_DIR "/simulator/") +
                      QString::fromLatin1(QTest::currentDataTag()));
    const QStringList names =
        folder.entryList({QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files);
    QVERIFY(names.size() >= 4);
    const QRegularExpression include(QStringLiteral("^#include \"([^\"/]*)/"),
                                     QRegularExpression::MultilineOption);
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        QVERIFY2(!text.contains(QLatin1String("#include <Q")), qPrintable(name));
        for (auto match = include.globalMatch(text); match.hasNext();) {
            QVERIFY2(known.contains(match.next().captured(1)), qPrintable(name));
        }
    }
}

SCN_TEST(TestSimModel, testprogram::NoApplication)
#include "test_simmodel.moc"
