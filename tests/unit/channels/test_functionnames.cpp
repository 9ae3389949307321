#include "channels/commfunc.h"
#include "channels/functionnames.h"
#include "support/testprogram.h"

#include <QtTest>

class TestFunctionNames : public QObject
{
    Q_OBJECT

private slots:
    void replyHasADisplayName_data();
    void replyHasADisplayName();
    void plainNamesAreInTheCatalogue();
};

void TestFunctionNames::replyHasADisplayName_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QStringList>("queries");
    QTest::addColumn<QString>("name");

    const auto plain = [](const char* reply, const char* name) {
        QTest::newRow(reply) << QString::fromLatin1(reply) << QStringList() << QStringList()
                             << QString::fromUtf8(name);
    };
    plain("VOLT", "直流电压");
    plain("VOLT:AC", "交流电压");
    plain("PER", "周期");
    plain("FREQ", "频率");
    plain("RES", "双线ohm");
    plain("FRES", "四线ohm");
    plain("CAP", "电容");
    plain("DIOD", "二极管");
    plain("STR:DIR", "直接应变");
    plain("STR:FDIR", "4线直接应变");
    plain("STR:QUAR", "四分之一(弯曲)");
    plain("STR:HALF:BEND", "半桥(弯曲)");
    plain("STR:HALF:POIS", "半桥(柏松)");
    plain("STR:FULL:BEND", "全桥(弯曲)");
    plain("STR:FULL:POIS", "全桥(柏松)");
    plain("STR:FULL:BEND:POIS", "全桥(弯曲柏松)");
    plain("CURR", "直流电流");
    plain("CURR:AC", "交流电流");
    plain("", "");
    plain("volt", "");
    plain("VOLT:DC", "");
    plain("TEMP", "");

    const QString kind = QStringLiteral("TEMP:TRAN:TYPE? (@205)");
    const QString thermocouple = QStringLiteral("TEMP:TRAN:TC:TYPE? (@205)");
    const QString thermistor = QStringLiteral("TEMP:TRAN:THER:TYPE? (@205)");
    const QString fourWire = QStringLiteral("TEMP:TRAN:fth:TYPE? (@205)");
    const auto sensor = [](const char* title, const char* reply, const QStringList& answers,
                           const QStringList& queries, const char* name) {
        QTest::newRow(title) << QString::fromLatin1(reply) << answers << queries
                             << QString::fromUtf8(name);
    };
    const QString tc = QStringLiteral("TC");
    const QString ther = QStringLiteral("THER");
    sensor("thermocouple K", "TEMP:TC", {tc, QStringLiteral("K")}, {kind, thermocouple},
           "热电偶(类型K)");
    sensor("thermocouple of any letter", "TEMP:TC", {tc, QStringLiteral("Z")}, {kind, thermocouple},
           "热电偶(类型Z)");
    sensor("thermocouple without an answer", "TEMP:TC", {tc, QString()}, {kind, thermocouple},
           "热电偶(类型)");
    sensor("no thermocouple after all", "TEMP:TC", {QStringLiteral("RTD")}, {kind},
           "热电偶(类型B)");
    sensor("thermocouple, silence", "TEMP:TC", {QString()}, {kind}, "热电偶(类型B)");
    sensor("RTD", "TEMP:RTD", {QStringLiteral("RTD")}, {kind}, "温度二线制RTD");
    sensor("RTD whatever the kind", "TEMP:RTD", {tc}, {kind}, "温度二线制RTD");
    sensor("four-wire RTD", "TEMP:FRTD", {QString()}, {kind}, "温度四线制RTD");
    sensor("thermistor 2.2K", "TEMP:THER", {ther, QStringLiteral("+2.25200000E+03")},
           {kind, thermistor}, "热敏电阻(2.2K)");
    sensor("thermistor 5K", "TEMP:THER", {ther, QStringLiteral("5000")}, {kind, thermistor},
           "热敏电阻(5K)");
    sensor("thermistor 10K", "TEMP:THER", {ther, QStringLiteral("+1.0E+04")}, {kind, thermistor},
           "热敏电阻(10K)");
    sensor("unknown thermistor", "TEMP:THER", {ther, QStringLiteral("2200")}, {kind, thermistor},
           "");
    sensor("thermistor that is no number", "TEMP:THER", {ther, QStringLiteral("nan")},
           {kind, thermistor}, "");
    sensor("thermistor without an answer", "TEMP:THER", {ther, QString()}, {kind, thermistor}, "");
    sensor("no thermistor after all", "TEMP:THER", {tc}, {kind}, "热敏电阻(5K)");
    sensor("four-wire thermistor 2.2K", "TEMP:FTH", {ther, QStringLiteral("+2252")},
           {kind, fourWire}, "4线制热敏电阻(2.2K)");
    sensor("four-wire thermistor 10K", "TEMP:FTH", {ther, QStringLiteral("10000")},
           {kind, fourWire}, "4线制热敏电阻(10K)");
    sensor("unknown four-wire thermistor", "TEMP:FTH", {ther, QStringLiteral("1")},
           {kind, fourWire}, "");
    // The kind FTH is not queried.
    sensor("four-wire thermistor by its own name", "TEMP:FTH", {QStringLiteral("FTH")}, {kind},
           "4线制热敏电阻(5K)");
}

void TestFunctionNames::replyHasADisplayName()
{
    QFETCH(const QString, reply);
    QFETCH(QStringList, answers);
    QFETCH(const QStringList, queries);
    QFETCH(const QString, name);
    QStringList asked;
    const scn::InstrumentQuery ask = [&asked, &answers](const QString& query) {
        asked << query;
        return answers.isEmpty() ? QStringLiteral("not expected") : answers.takeFirst();
    };
    QCOMPARE(scn::displayNameOfFunction(reply, 205, ask), name);
    QCOMPARE(asked, queries);
}

void TestFunctionNames::plainNamesAreInTheCatalogue()
{
    // A name that the combo boxes do not know would never be selected.
    CommFunc catalogue;
    const scn::InstrumentQuery silent = [](const QString&) { return QString(); };
    for (const FuncCommand& command : funcCommands) {
        const QString name = scn::displayNameOfFunction(command.function, 101, silent);
        QVERIFY(!name.isEmpty());
        const int index = catalogue.functionIndex(name);
        QCOMPARE(funcCommands.value(index).function, command.function);
    }
}

SCN_TEST(TestFunctionNames, QCoreApplication)
#include "test_functionnames.moc"
