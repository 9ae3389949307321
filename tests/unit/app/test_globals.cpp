#include "instrument/cdevicevisa.h"
#include "state/globals.h"
#include "support/fakevisa.h"
#include "support/testprogram.h"

#include <QTest>

/// The shared state as main() finds it.
class TestGlobals : public QObject
{
    Q_OBJECT

private slots:
    void valuesBeforeAnythingRan();
    void instrumentSessionIsOpenedBeforeMain();
};

void TestGlobals::valuesBeforeAnythingRan()
{
    QCOMPARE(g_resourceName, QStringLiteral("USB0::0x049F::0x606E::392769d769216474::0::INSTR"));
    QCOMPARE(g_instrumentId, QString());
    QVERIFY(!g_instrumentConnected);
    QVERIFY(!g_scanRunning);
    QVERIFY(g_scanChannels.isEmpty());
    QVERIFY(g_curveSeries.isEmpty());
    QCOMPARE(g_scanStartText, QString());
    QCOMPARE(g_scanEndText, QString());
}

void TestGlobals::instrumentSessionIsOpenedBeforeMain()
{
    // Whoever creates the object from here on gets the fake.
    const FakeVisa fake;
    QCOMPARE(g_visa, CDeviceVisa::instance());
    QVERIFY(!g_visa->parent());
    QCOMPARE(fake.calls(), QStringList());
}

SCN_TEST(TestGlobals, QCoreApplication)
#include "test_globals.moc"
