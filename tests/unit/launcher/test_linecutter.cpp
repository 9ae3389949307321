#include "launcher/linecutter.h"
#include "support/testprogram.h"

#include <QtTest>

using namespace scnlauncher;

/// Lines from a stream that may never end one.
class TestLineCutter : public QObject
{
    Q_OBJECT

private slots:
    void linesAreCut_data();
    void linesAreCut();
    void piecesMakeALine();
    void longLineIsCutAndTheNextIsWhole();
    void endlessLineCostsNoMemory();
    void lineOfTheGreatestLengthIsWhole();
};

void TestLineCutter::linesAreCut_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QList<QByteArray>>("lines");
    QTest::addColumn<QByteArray>("rest");
    QTest::newRow("nothing") << QByteArray() << QList<QByteArray>() << QByteArray();
    QTest::newRow("unfinished") << QByteArray("a") << QList<QByteArray>() << QByteArray("a");
    QTest::newRow("two") << QByteArray("a\nb\n") << QList<QByteArray>{"a", "b"} << QByteArray();
    QTest::newRow("empty") << QByteArray("\n\nb") << QList<QByteArray>{"", ""} << QByteArray("b");
    QTest::newRow("carriage return")
        << QByteArray("a\r\n") << QList<QByteArray>{"a"} << QByteArray();
}

void TestLineCutter::linesAreCut()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QList<QByteArray>, lines);
    QFETCH(QByteArray, rest);
    LineCutter cutter;
    QCOMPARE(cutter.take(bytes), lines);
    QCOMPARE(cutter.takeRest(), rest);
    QCOMPARE(cutter.takeRest(), QByteArray());
}

void TestLineCutter::piecesMakeALine()
{
    LineCutter cutter;
    QCOMPARE(cutter.take("WI"), QList<QByteArray>());
    QCOMPARE(cutter.take("D:7"), QList<QByteArray>());
    QCOMPARE(cutter.take(";\nX"), QList<QByteArray>{"WID:7;"});
    QCOMPARE(cutter.takeRest(), QByteArray("X"));
}

void TestLineCutter::longLineIsCutAndTheNextIsWhole()
{
    LineCutter cutter;
    const QByteArray begin(LineCutter::kLongestLine, 'x');
    QCOMPARE(cutter.take(begin + "yyy"), QList<QByteArray>{begin + LineCutter::cutMark()});
    QCOMPARE(cutter.take("yyy\nnext\n"), QList<QByteArray>{"next"});
}

void TestLineCutter::endlessLineCostsNoMemory()
{
    LineCutter cutter;
    const QByteArray block(1 << 20, 'x');
    int lines = 0;
    for (int megabytes = 0; megabytes < 256; ++megabytes) {
        lines += cutter.take(block).size();
    }
    QCOMPARE(lines, 1);
    QCOMPARE(cutter.takeRest(), QByteArray());
}

void TestLineCutter::lineOfTheGreatestLengthIsWhole()
{
    LineCutter cutter;
    const QByteArray line(LineCutter::kLongestLine, 'x');
    QCOMPARE(cutter.take(line + '\n'), QList<QByteArray>{line});
}

SCN_TEST(TestLineCutter, QCoreApplication)
#include "test_linecutter.moc"
