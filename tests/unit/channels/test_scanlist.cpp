#include "channels/scanlist.h"
#include "support/testprogram.h"

#include <QtTest>

class TestScanList : public QObject
{
    Q_OBJECT

private slots:
    void runsAreCompressed_data();
    void runsAreCompressed();
    void replyIsDecoded_data();
    void replyIsDecoded();
};

void TestScanList::runsAreCompressed_data()
{
    QTest::addColumn<QList<int>>("channels");
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QList<int>() << QString();
    QTest::newRow("one") << QList<int>{101} << QStringLiteral("101");
    QTest::newRow("two in a row") << QList<int>{101, 102} << QStringLiteral("101,102");
    QTest::newRow("two apart") << QList<int>{101, 103} << QStringLiteral("101,103");
    QTest::newRow("three in a row") << QList<int>{101, 102, 103} << QStringLiteral("101:103");
    QTest::newRow("mixed") << QList<int>{101, 102, 103, 105, 106, 201}
                           << QStringLiteral("101:103,105,106,201");
    QTest::newRow("ending in a run")
        << QList<int>{101, 201, 202, 203, 204} << QStringLiteral("101,201:204");
    QTest::newRow("a slot's end does not break a run")
        << QList<int>{199, 200, 201} << QStringLiteral("199:201");
}

void TestScanList::runsAreCompressed()
{
    QFETCH(const QList<int>, channels);
    QFETCH(const QString, text);
    QCOMPARE(scn::compressScanList(channels), text);
}

void TestScanList::replyIsDecoded_data()
{
    QTest::addColumn<QString>("reply");
    QTest::addColumn<bool>("isEmptyList");
    QTest::addColumn<QList<int>>("channels");
    QTest::newRow("empty list") << QStringLiteral("#13(@)") << true << QList<int>();
    QTest::newRow("one channel") << QStringLiteral("#16(@101)") << false << QList<int>{101};
    QTest::newRow("channels in their order")
        << QStringLiteral("#214(@101,203,102)") << false << QList<int>{101, 203, 102};
    QTest::newRow("another empty form") << QStringLiteral("(@)") << false << QList<int>{0};
    QTest::newRow("no answer") << QString() << false << QList<int>{0};
    QTest::newRow("no list at all") << QStringLiteral("101,102") << false << QList<int>{0};
    QTest::newRow("empty entry") << QStringLiteral("#19(@101,,102)") << false
                                 << QList<int>{101, 0, 102};
    QTest::newRow("a range is no number")
        << QStringLiteral("#210(@101:103)") << false << QList<int>{0};
    QTest::newRow("marks anywhere are dropped")
        << QStringLiteral("(@(101),#102)") << false << QList<int>{101, 102};
    QTest::newRow("blanks around a number")
        << QStringLiteral("#210(@101, 102)") << false << QList<int>{101, 102};
}

void TestScanList::replyIsDecoded()
{
    QFETCH(const QString, reply);
    QFETCH(const bool, isEmptyList);
    QFETCH(const QList<int>, channels);
    const scn::ScanListReply decoded = scn::decodeScanListReply(reply);
    QCOMPARE(decoded.isEmptyList, isEmptyList);
    QCOMPARE(decoded.channels, channels);
}

SCN_TEST(TestScanList, QCoreApplication)
#include "test_scanlist.moc"
