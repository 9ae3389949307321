#include "acquisition/readdata.h"
#include "app/mainwidget.h"
#include "channels/advancedsetting.h"
#include "overlay/loadingview.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "support/hand.h"
#include "support/standardstreams_posix.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "widgets/customlineedit.h"
#include "windowbench.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

/// More time-outs of five seconds in a row than fit in a minute.
constexpr int kPatience = 13;

/// Ends the event loop with a message when a test would wait forever.
constexpr int kPatienceMs = 20000;
constexpr int kImpatience = 77;

struct TwoChannels : WindowBench
{
    TwoChannels() { instrument().putModule(2, QStringLiteral("SCN4005A")); }

    void silenceAt(const char* line, bool isSilent = true)
    {
        instrument().whenAsked(QString::fromLatin1(line),
                               [this, isSilent] { instrument().setSilent(isSilent); });
    }
    void dropLinkAt(const char* line)
    {
        instrument().whenAsked(QString::fromLatin1(line),
                               [this] { instrument().visa().dropConnection(); });
    }

    /// The window shows the overlay of a lost instrument, and nothing polls.
    bool isLost() const
    {
        return !g_instrumentConnected && reconnectView() && !reconnectView()->isHidden() &&
               !ReadData::instance()->isRunning();
    }
};

QStringList linesFrom(const QStringList& lines, const char* first)
{
    return lines.mid(lines.indexOf(QString::fromLatin1(first)));
}

/// The spin box that a panel shows; null when it shows none.
const QDoubleSpinBox* shownSpinOf(const AdvancedSetting* panel)
{
    const auto boxes = panel->findChildren<QDoubleSpinBox*>();
    const auto shown = std::find_if(boxes.cbegin(), boxes.cend(),
                                    [](const auto* box) { return box->isVisible(); });
    return shown != boxes.cend() ? *shown : nullptr;
}

} // namespace

/// A link that dies, or goes half silent, during the window's read-back; and a launcher that asks
/// for the end meanwhile.
class TestLinkLoss : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }

    void silentReadBackIsGivenUpAfterAMinute();
    void oneReplyBeginsTheMinuteAnew();
    void silentSearchIsGivenUpAfterAMinute();
    void lostLinkEndsTheSearchAtOnce();
    void lostLinkEndsTheReadBackAtOnce();
    void lostLinkEndsTheReadBackOfAChange();
    void overlayDropsWhatIsBeingTypedInAPanel_data();
    void overlayDropsWhatIsBeingTypedInAPanel();
    void silenceEndsTheRestoringOfDefaultsAfterAMinute_data();
    void silenceEndsTheRestoringOfDefaultsAfterAMinute();
    void lossAtThePartnerEndsTheChangeOfBoth();
    void lossDuringARecoveryCanBeTriedAgain();
    void moduleOutOfASpoiltReplyIsForgotten();
    void lossWhileThePagesComeUpLateCanBeRecovered();
    void exitIsHeededBetweenTwoExchanges_data();
    void exitIsHeededBetweenTwoExchanges();
};

void TestLinkLoss::silentReadBackIsGivenUpAfterAMinute()
{
    TwoChannels bench;
    bench.silenceAt("ROUT:SCAN?");
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    window.show();
    QCOMPARE(linesFrom(bench.startUpLines(), "ROUT:SCAN?").size(), kPatience);
    QVERIFY(bench.isLost());
    QVERIFY(bench.startupView()->isHidden());

    bench.instrument().whenAsked(QStringLiteral("ROUT:SCAN?"), [] {});
    bench.instrument().setSilent(false);
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView()->isHidden(), 10000);
    QVERIFY(g_instrumentConnected);
    QVERIFY(bench.instrument().lines().contains(QStringLiteral("MEM:STAT:VAL? 5")));
    QTRY_VERIFY(ReadData::instance()->isRunning());
    WindowBench::endAcquisition();
}

void TestLinkLoss::oneReplyBeginsTheMinuteAnew()
{
    TwoChannels bench;
    bench.silenceAt("ROUT:SCAN?");
    // Twelve queries later one is answered.
    bench.silenceAt("CALC:SCAL:STAT? (@201)", false);
    bench.silenceAt("CALC:SCAL:UNIT? (@201)");
    bench.open(WindowBench::AcquisitionRuns);
    QCOMPARE(linesFrom(bench.startUpLines(), "ROUT:SCAN?")
                 .indexOf(QStringLiteral("CALC:SCAL:STAT? (@201)")),
             kPatience - 1);
    QCOMPARE(linesFrom(bench.startUpLines(), "CALC:SCAL:UNIT? (@201)").size(), kPatience);
    QVERIFY(bench.isLost());
}

void TestLinkLoss::silentSearchIsGivenUpAfterAMinute()
{
    TwoChannels bench;
    bench.silenceAt("SYST:CTYP? 1");
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    QCOMPARE(linesFrom(bench.startUpLines(), "SYST:CTYP? 1").size(), kPatience);
    QVERIFY(bench.isLost());
    QVERIFY(!window.findChild<QTabWidget*>());
}

void TestLinkLoss::lostLinkEndsTheSearchAtOnce()
{
    TwoChannels bench;
    bench.dropLinkAt("FUNC? (@201)");
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    QCOMPARE(bench.startUpLines().constLast(), QStringLiteral("FUNC? (@201)"));
    QVERIFY(bench.isLost());
    QVERIFY(!window.findChild<QTabWidget*>());
}

void TestLinkLoss::lostLinkEndsTheReadBackAtOnce()
{
    TwoChannels bench;
    bench.dropLinkAt("INP:IMP:AUTO? (@201)");
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    QCOMPARE(bench.startUpLines().constLast(), QStringLiteral("INP:IMP:AUTO? (@201)"));
    QVERIFY(bench.isLost());
    QVERIFY(window.findChild<QTabWidget*>());
}

void TestLinkLoss::lostLinkEndsTheReadBackOfAChange()
{
    TwoChannels bench;
    bench.windowTiming.startupView = 10ms;
    MainWidget& window = bench.open();
    window.resize(1500, 900);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(bench.startupView()->isHidden()); // until then it keeps the keys away
    bench.dropLinkAt("FUNC? (@201)");
    CustomLineEdit* const gain = bench.edit(201, scn::GainColumn);
    QTest::mouseClick(gain, Qt::LeftButton);
    QTRY_VERIFY(gain->hasFocus());
    QTest::keyClicks(gain, QStringLiteral("2"));
    QTest::keyClick(gain, Qt::Key_Return);
    QCOMPARE(bench.instrument().lines().constLast(), QStringLiteral("FUNC? (@201)"));
    QVERIFY(bench.isLost());
}

void TestLinkLoss::overlayDropsWhatIsBeingTypedInAPanel_data()
{
    QTest::addColumn<bool>("isLoss");
    QTest::newRow("recovery") << true;
    QTest::newRow("busy") << false;
}

void TestLinkLoss::overlayDropsWhatIsBeingTypedInAPanel()
{
    QFETCH(const bool, isLoss);
    TwoChannels bench;
    bench.windowTiming.startupView = 10ms;
    MainWidget& window = bench.open();
    window.resize(1500, 900);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(bench.startupView()->isHidden());
    AdvancedSetting* const panel = bench.openPanel(201, scn::MoreColumn);
    QVERIFY(QTest::qWaitForWindowActive(panel));
    panel->setDelayMode(1);
    const QDoubleSpinBox* const delay = shownSpinOf(panel);
    QVERIFY(delay && delay->isEnabled());
    hand::click(delay->findChild<QLineEdit*>());
    hand::press(Qt::Key_A, Qt::ControlModifier);
    hand::type(QStringLiteral("4"));
    bench.instrument().takeLines();

    if (isLoss) {
        bench.call("recvUseInstSlot");
    } else {
        bench.startupView()->showLoading();
    }
    QCOMPARE(bench.isLost(), isLoss);
    QVERIFY(!panel->isVisible());
    QCOMPARE(bench.instrument().takeLines(), QStringList());
    QCOMPARE(delay->value(), 0.0);
    QCOMPARE(delay->text(), QStringLiteral("0.000"));
}

void TestLinkLoss::silenceEndsTheRestoringOfDefaultsAfterAMinute_data()
{
    QTest::addColumn<QString>("firstMissed");
    QTest::newRow("from the first question") << QStringLiteral("ROUT:CHAN:LAB? (@201)");
    // One read-back has too few queries left to fill the minute.
    QTest::newRow("over two read-backs") << QStringLiteral("FUNC? (@201)");
}

/// The panel sends each option that differs and has it read back: none of that starts again.
void TestLinkLoss::silenceEndsTheRestoringOfDefaultsAfterAMinute()
{
    QFETCH(QString, firstMissed);
    const QByteArray silentFrom = firstMissed.toLatin1();
    TwoChannels bench;
    bench.instrument().setReply(QStringLiteral("VOLT:DC:NPLC?"), QStringLiteral("+1.0E+01"));
    bench.open().show();
    AdvancedSetting* const panel = bench.openPanel(201, scn::MoreColumn);
    bench.instrument().takeLines();
    bench.silenceAt(silentFrom.constData());
    for (QPushButton* button : panel->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("恢复默认值")) {
            QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    const QStringList lines = linesFrom(bench.instrument().lines(), silentFrom.constData());
    QCOMPARE(lines.filter(QStringLiteral("?")).size(), kPatience);
    QVERIFY2(lines.constLast().contains(QLatin1Char('?')), qPrintable(lines.constLast()));
    QVERIFY(bench.isLost());
}

/// The range of a four-wire channel goes to its partner first.
void TestLinkLoss::lossAtThePartnerEndsTheChangeOfBoth()
{
    WindowBench bench;
    bench.instrument().putModule(1, QStringLiteral("SCN4002A"));
    bench.instrument().setReply(QStringLiteral("FUNC? (@101)"), QStringLiteral("\"FRES\""));
    bench.windowTiming.startupView = 10ms;
    MainWidget& window = bench.open();
    window.resize(1500, 900);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY(bench.startupView()->isHidden()); // until then it keeps the keys away
    CustomComboBox* const range = bench.box(101, scn::RangeColumn);
    const int row = range->currentIndex();
    range->setFocus();
    bench.instrument().takeLines();
    bench.instrument().setSilent(true);
    QTest::keyClick(range, row == 0 ? Qt::Key_Down : Qt::Key_Up);
    const QStringList lines = bench.instrument().takeLines();
    QVERIFY(!lines.isEmpty());
    QVERIFY2(lines.constFirst().endsWith(QStringLiteral("(@109)")), qPrintable(lines.constFirst()));
    QCOMPARE(lines.filter(QStringLiteral("(@101)")), QStringList());
    QVERIFY(!g_instrumentConnected);
}

void TestLinkLoss::lossDuringARecoveryCanBeTriedAgain()
{
    TwoChannels bench;
    bench.open().show();
    bench.call("recvUseInstSlot");
    bench.dropLinkAt("TRIG:SOUR?");
    bench.instrument().takeLines();
    bench.clickRecovery();
    QTRY_VERIFY(bench.instrument().lines().contains(QStringLiteral("TRIG:SOUR?")));
    QTRY_VERIFY(bench.reconnectView()->findChild<QPushButton*>()->isVisible());
    QVERIFY(bench.isLost());
    QCOMPARE(bench.instrument().takeLines().constLast(), QStringLiteral("TRIG:SOUR?"));

    bench.instrument().whenAsked(QStringLiteral("TRIG:SOUR?"), [] {});
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView()->isHidden(), 10000);
    QVERIFY(g_instrumentConnected);
    WindowBench::endAcquisition();
}

void TestLinkLoss::moduleOutOfASpoiltReplyIsForgotten()
{
    TwoChannels bench;
    bench.open().show();
    bench.instrument().putModule(4, QStringLiteral("SCN4005A"));
    bench.silenceAt("FUNC? (@401)");
    bench.silenceAt("SYST:CTYP? 5", false);
    bench.loseAndRecover();
    QVERIFY(slotPresent[2]);
    QVERIFY(!slotPresent[4]);
    QCOMPARE(bench.instrument().lines().filter(QStringLiteral("(@40")),
             (QStringList{QStringLiteral("FUNC? (@401)"), QStringLiteral("FUNC? (@402)")}));

    // One that answers is there.
    bench.instrument().whenAsked(QStringLiteral("FUNC? (@401)"), [] {});
    bench.loseAndRecover();
    QVERIFY(slotPresent[4]);
}

void TestLinkLoss::lossWhileThePagesComeUpLateCanBeRecovered()
{
    TwoChannels bench;
    bench.instrument().visa().fail(FakeVisa::Operation::Open, scn::visa::VI_ERROR_RSRC_NFOUND, 0,
                                   1);
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    window.show();
    bench.dropLinkAt("TRIG:SOUR?");
    bench.clickRecovery();
    QTRY_VERIFY(window.findChild<QTabWidget*>() && window.isVisible());
    QVERIFY(bench.isLost());
    bench.instrument().whenAsked(QStringLiteral("TRIG:SOUR?"), [] {});
    QTRY_VERIFY(bench.reconnectView()->findChild<QPushButton*>()->isVisible());
    bench.clickRecovery();
    QTRY_VERIFY_WITH_TIMEOUT(bench.reconnectView()->isHidden(), 10000);
    QTRY_VERIFY(ReadData::instance()->isRunning());
    WindowBench::endAcquisition();
}

void TestLinkLoss::exitIsHeededBetweenTwoExchanges_data()
{
    QTest::addColumn<QString>("during");
    QTest::addColumn<QString>("lastLine");
    QTest::newRow("search") << QStringLiteral("SYST:CTYP? 2") << QStringLiteral("SYST:CTYP? 15");
    QTest::newRow("read-back") << QStringLiteral("ROUT:SCAN?") << QStringLiteral("MEM:STAT:VAL? 5");
}

void TestLinkLoss::exitIsHeededBetweenTwoExchanges()
{
    QFETCH(QString, during);
    QFETCH(QString, lastLine);
    FedInput input;
    TwoChannels bench;
    // The reader has all the remaining exchanges to see the line.
    bench.instrument().whenAsked(during, [&bench, &input] {
        input.write("exit\n");
        bench.instrument().visa().setReadDuration(200);
    });
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    QVERIFY(bench.startUpLines().contains(during));
    QVERIFY2(!bench.startUpLines().contains(lastLine),
             qPrintable(bench.startUpLines().constLast()));
    QTimer::singleShot(kPatienceMs, &window, [] { QCoreApplication::exit(kImpatience); });
    QCOMPARE(QApplication::exec(), 0);
    WindowBench::endAcquisition();
}

SCN_TEST(TestLinkLoss, QApplication)
#include "test_linkloss.moc"
