#include "common/channelnumber.h"
#include "support/testprogram.h"

#include <QtTest>

using scn::ChannelNumber;

class TestChannelNumber : public QObject
{
    Q_OBJECT

private slots:
    void labelIsSlotAndPosition_data();
    void labelIsSlotAndPosition();
    void rowsCountFromZero();
    void textHasLabelAndUnit();
    void labelComesBackFromTheText_data();
    void labelComesBackFromTheText();
};

void TestChannelNumber::labelIsSlotAndPosition_data()
{
    QTest::addColumn<int>("label");
    QTest::addColumn<int>("slot");
    QTest::addColumn<int>("position");
    QTest::newRow("first") << 101 << 1 << 1;
    QTest::newRow("last of a bank") << 210 << 2 << 10;
    QTest::newRow("last slot") << 1540 << 15 << 40;
    QTest::newRow("no channel") << 0 << 0 << 0;
    QTest::newRow("no position") << 300 << 3 << 0;
}

void TestChannelNumber::labelIsSlotAndPosition()
{
    QFETCH(const int, label);
    QFETCH(const int, slot);
    QFETCH(const int, position);
    const auto number = ChannelNumber::fromLabel(label);
    QCOMPARE(number.slot(), slot);
    QCOMPARE(number.position(), position);
    QCOMPARE(number.label(), label);
    QCOMPARE(ChannelNumber(slot, position).label(), label);
}

void TestChannelNumber::rowsCountFromZero()
{
    QCOMPARE(ChannelNumber::fromRow(3, 0).label(), 301);
    QCOMPARE(ChannelNumber::fromLabel(312).row(), 11);
}

void TestChannelNumber::textHasLabelAndUnit()
{
    QCOMPARE(scn::channelText(101, QStringLiteral("Vdc")), QStringLiteral("101(Vdc)"));
    // A unit that looks like a marker stays as it is.
    QCOMPARE(scn::channelText(101, QStringLiteral("%1")), QStringLiteral("101(%1)"));
}

void TestChannelNumber::labelComesBackFromTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("label");
    QTest::addColumn<bool>("isChannel");
    QTest::newRow("channel") << QStringLiteral("101(Vdc)") << 101 << true;
    QTest::newRow("without a unit") << QStringLiteral("101") << 101 << true;
    QTest::newRow("none") << QStringLiteral("无") << 0 << false;
    QTest::newRow("nothing") << QString() << 0 << false;
}

void TestChannelNumber::labelComesBackFromTheText()
{
    QFETCH(const QString, text);
    QFETCH(const int, label);
    QFETCH(const bool, isChannel);
    bool ok = !isChannel;
    QCOMPARE(scn::labelOfChannelText(text, &ok), label);
    QCOMPARE(ok, isChannel);
}

SCN_TEST(TestChannelNumber, QCoreApplication)
#include "test_channelnumber.moc"
