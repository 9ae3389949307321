#include "channels/scalefunction.h"
#include "channels/unittext.h"
#include "support/testprogram.h"

#include <QtTest>

using scn::ScaleFunction;

class TestUnitText : public QObject
{
    Q_OBJECT

private slots:
    void degreesHaveASignOfTheirOwnOnTheWire_data();
    void degreesHaveASignOfTheirOwnOnTheWire();
    void quotesOfTheReplyGo();
    void scaleFunctionsHaveTheirNames_data();
    void scaleFunctionsHaveTheirNames();
    void unknownScaleFunctionIsLinear();
};

void TestUnitText::degreesHaveASignOfTheirOwnOnTheWire_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<QString>("wire");
    QTest::newRow("Celsius") << QStringLiteral("°C") << QStringLiteral("#C");
    QTest::newRow("Fahrenheit") << QStringLiteral("°F") << QStringLiteral("#F");
    QTest::newRow("Kelvin") << QStringLiteral("K") << QStringLiteral("K");
    QTest::newRow("volts") << QStringLiteral("Vdc") << QStringLiteral("Vdc");
    QTest::newRow("no unit") << QString() << QString();
}

void TestUnitText::degreesHaveASignOfTheirOwnOnTheWire()
{
    QFETCH(const QString, screen);
    QFETCH(const QString, wire);
    QCOMPARE(scn::unitOnWire(screen), wire);
    QCOMPARE(scn::unitOnScreen(wire), screen);
}

void TestUnitText::quotesOfTheReplyGo()
{
    QCOMPARE(scn::unitOnScreen(QStringLiteral("\"#C\"")), QStringLiteral("°C"));
    QCOMPARE(scn::unitOnScreen(QStringLiteral("\"dB\"")), QStringLiteral("dB"));
}

void TestUnitText::scaleFunctionsHaveTheirNames_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("SCAL") << 0;
    QTest::newRow("PCT") << 1;
    QTest::newRow("DBM") << 2;
    QTest::newRow("DB") << 3;
}

void TestUnitText::scaleFunctionsHaveTheirNames()
{
    QFETCH(const int, row);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(nameOf(static_cast<ScaleFunction>(row)), name);
    QCOMPARE(static_cast<int>(scn::scaleFunctionOf(name)), row);
}

void TestUnitText::unknownScaleFunctionIsLinear()
{
    QCOMPARE(scn::scaleFunctionOf(QStringLiteral("dbm")), ScaleFunction::Linear);
    QCOMPARE(scn::scaleFunctionOf(QString()), ScaleFunction::Linear);
}

SCN_TEST(TestUnitText, QCoreApplication)
#include "test_unittext.moc"
