#include "app/mainwidget.h"
#include "channels/commfunc.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "windowbench.h"

#include <QPushButton>
#include <QtTest>

using namespace scn;

namespace {

const QString kFourWire = QStringLiteral("四线ohm");

/// Two banks of ten channels, and what the instrument initially measures on some of them.
struct TwoBanks : WindowBench
{
    explicit TwoBanks(const QMap<int, QString>& functions = {})
    {
        instrument().putModule(1, QStringLiteral("SCN4000A"));
        for (auto entry = functions.cbegin(); entry != functions.cend(); ++entry) {
            measure(entry.key(), entry.value());
        }
        open();
    }

    /// Sets what the instrument measures on a channel.
    void measure(int channel, const QString& function)
    {
        instrument().setReply(QStringLiteral("FUNC? (@%1)").arg(channel),
                              QLatin1Char('"') + function + QLatin1Char('"'));
    }

    void choose(int channel, const QString& name)
    {
        CustomComboBox* const list = box(channel, FunctionColumn);
        QVERIFY(list->findText(name) >= 0);
        list->setCurrentIndex(list->findText(name));
    }

    bool isOutOfUse(int channel) const
    {
        for (int column = NumberColumn; column < StretchColumn; ++column) {
            if (tree()->itemWidget(item(channel), column)->isEnabled()) {
                return false;
            }
        }
        return !(item(channel)->flags() & Qt::ItemIsUserCheckable);
    }

    bool isInUse(int channel) const
    {
        return box(channel, FunctionColumn)->isEnabled() &&
               (item(channel)->flags() & Qt::ItemIsUserCheckable);
    }

    QString functionOf(int channel) const { return box(channel, FunctionColumn)->currentText(); }
    QStringList takeLines() { return instrument().takeLines(); }
};

} // namespace

/// The row of a partner channel: disabled while a four-wire function holds it, untouched otherwise.
class TestChannelPartner : public QObject
{
    Q_OBJECT

private slots:
    void reportedFourWireFunctionTakesThePartner();
    void startTakesThePartnersToo();
    void readBackOfAPartnerLeavesItsBox();
    void reportedTwoWireFunctionGivesThePartnerBack();
    void refusedFourWireChoiceGivesThePartnerBack();
    void partnerThatWasItsOwnIsLeftAlone();
    void unknownFunctionLeavesThePartnerAsItIs();
    void partnerStaysOutOfTheScanListWhenItsListIsRefused();
};

void TestChannelPartner::reportedFourWireFunctionTakesThePartner()
{
    TwoBanks bench;
    bench.tick(105);
    bench.tick(115);
    bench.measure(105, QStringLiteral("FRES"));
    bench.takeLines();
    bench.readBack(105);
    QVERIFY(bench.isOutOfUse(115));
    QCOMPARE(bench.functionOf(115), kFourWire);
    QCOMPARE(WindowBench::itemsOf(bench.box(115, FunctionColumn)), CommFunc().functionList(105));
    QCOMPARE(bench.tickedChannels(), QList<int>{105});
    QCOMPARE(g_scanChannels.keys(), QList<int>{105});
    QCOMPARE(bench.module(1)->checkState(ScanColumn), Qt::PartiallyChecked);
    // Only questions went out.
    for (const QString& line : bench.takeLines()) {
        QVERIFY2(line.contains(QLatin1Char('?')), qPrintable(line));
    }
    QVERIFY(bench.isInUse(114) && bench.isInUse(116) && bench.isInUse(105));
    // So the instrument accepts the next tick's list.
    bench.tick(101);
    QCOMPARE(bench.takeLines().constFirst(), QStringLiteral("ROUT:SCAN (@101,105)"));
}

void TestChannelPartner::startTakesThePartnersToo()
{
    TwoBanks bench({{103, QStringLiteral("FRES")}, {113, QStringLiteral("FRES")}});
    QVERIFY(bench.isOutOfUse(113));
    QCOMPARE(bench.functionOf(113), kFourWire);
    // Nothing in its own read-back enables it, the scaling controls included.
    bench.readBack(113);
    QVERIFY(bench.isOutOfUse(113));
    QVERIFY(bench.isInUse(112));
}

void TestChannelPartner::readBackOfAPartnerLeavesItsBox()
{
    TwoBanks bench({{103, QStringLiteral("FRES")}, {113, QStringLiteral("VOLT")}});
    QVERIFY(bench.isOutOfUse(113));
    QCOMPARE(bench.functionOf(113), kFourWire);
    bench.takeLines();
    bench.readBack(113);
    QCOMPARE(bench.functionOf(113), kFourWire);
    QVERIFY(bench.isOutOfUse(113));
    // It is read back like any other.
    QCOMPARE(bench.takeLines(), voltageReadBack(113));
    // Enabled again, it shows what it measures.
    bench.measure(103, QStringLiteral("RES"));
    bench.readBack(103);
    bench.measure(113, QStringLiteral("FREQ"));
    bench.readBack(113);
    QCOMPARE(bench.functionOf(113), QStringLiteral("频率"));
}

void TestChannelPartner::reportedTwoWireFunctionGivesThePartnerBack()
{
    TwoBanks bench({{103, QStringLiteral("FRES")}});
    QVERIFY(bench.isOutOfUse(113));
    bench.measure(103, QStringLiteral("RES"));
    bench.takeLines();
    bench.readBack(103);
    QVERIFY(bench.isInUse(113));
    QCOMPARE(WindowBench::itemsOf(bench.box(113, FunctionColumn)), CommFunc().functionList(113));
    for (const QString& line : bench.takeLines()) {
        QVERIFY2(line.contains(QLatin1Char('?')), qPrintable(line));
    }
}

void TestChannelPartner::refusedFourWireChoiceGivesThePartnerBack()
{
    TwoBanks bench;
    bench.choose(104, kFourWire);
    QVERIFY(bench.isOutOfUse(114));
    // The instrument still measures a voltage.
    bench.readBack(104);
    QCOMPARE(bench.functionOf(104), QStringLiteral("直流电压"));
    QVERIFY(bench.isInUse(114));
}

void TestChannelPartner::partnerThatWasItsOwnIsLeftAlone()
{
    TwoBanks bench({{112, QStringLiteral("RES")}});
    bench.tick(112);
    QCOMPARE(bench.functionOf(112), QStringLiteral("双线ohm"));
    bench.choose(102, QStringLiteral("双线ohm"));
    QCOMPARE(bench.functionOf(112), QStringLiteral("双线ohm"));
    QCOMPARE(bench.cell<QPushButton>(112, ScaleMoreColumn)->isEnabled(), false);
    QCOMPARE(bench.tickedChannels(), QList<int>{112});
    bench.choose(102, kFourWire);
    QVERIFY(bench.isOutOfUse(112));
    bench.choose(102, QStringLiteral("频率"));
    QVERIFY(bench.isInUse(112));
    QCOMPARE(bench.box(112, FunctionColumn)->currentIndex(), 0);
}

void TestChannelPartner::unknownFunctionLeavesThePartnerAsItIs()
{
    TwoBanks bench({{103, QStringLiteral("FRES")}});
    bench.measure(103, QStringLiteral("NONSENSE"));
    bench.readBack(103);
    QVERIFY(bench.isOutOfUse(113));
}

void TestChannelPartner::partnerStaysOutOfTheScanListWhenItsListIsRefused()
{
    TwoBanks bench;
    bench.tick(105);
    bench.tick(115);
    bench.instrument().setNextReply(QStringLiteral("SYST:ERR?"),
                                    QStringLiteral("-113,\"Undefined header\""));
    bench.choose(105, kFourWire);
    QVERIFY(bench.isOutOfUse(115));
    QCOMPARE(bench.tickedChannels(), QList<int>{105});
    QCOMPARE(g_scanChannels.keys(), QList<int>{105});
}

SCN_TEST(TestChannelPartner, QApplication)
#include "test_channelpartner.moc"
