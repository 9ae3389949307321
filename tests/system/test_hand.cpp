#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QTest>

namespace {

/// The function box of the third channel, with the window where ProgramUser puts it.
const QPoint kFunctionBox(705, 195);
constexpr int kTableLeft = 400;
constexpr int kTableRight = 1460;
constexpr int kPointerStep = 8;
constexpr int kTurnWaitMs = 2000;

QStringList functionsSent(const SimulatedInstrument& instrument)
{
    return instrument.received().filter(QStringLiteral("FUNC \""));
}

} // namespace

/// The channel table of the real program under a real pointer and a real wheel.
class TestHand : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(!m_display.name().isEmpty()); }
    void wheelTurnsABoxOnlyAfterAClick();

private:
    VirtualDisplay m_display;
};

void TestHand::wheelTurnsABoxOnlyAfterAClick()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:0")});
    ProgramProcess program(m_display.name());
    QVERIFY(ProgramUser(m_display, program).bringUp(instrument));
    m_display.xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"),
                       QString::number(program.windowHandle())});
    const auto turnWheel = [this] {
        m_display.xdotool({QStringLiteral("click"), QStringLiteral("5")});
    };

    // The pointer passes over the row's controls and stops on a box.
    for (int x = kTableLeft; x < kTableRight; x += kPointerStep) {
        m_display.movePointer(x, kFunctionBox.y());
    }
    m_display.movePointer(kFunctionBox.x(), kFunctionBox.y());
    for (int notch = 0; notch < 3; ++notch) {
        turnWheel();
    }
    QVERIFY(ProgramUser::waitForPolls(instrument, 2));
    QCOMPARE(functionsSent(instrument), QStringList());

    // The click opens the list as well. On a busy machine the key may arrive first, so it is
    // repeated.
    const auto turnAfterAClick = [this, &instrument, &turnWheel] {
        m_display.click(kFunctionBox.x(), kFunctionBox.y());
        m_display.xdotool({QStringLiteral("key"), QStringLiteral("Escape")});
        turnWheel();
        return QTest::qWaitFor([&instrument] { return !functionsSent(instrument).isEmpty(); },
                               kTurnWaitMs);
    };
    QTRY_VERIFY_WITH_TIMEOUT(turnAfterAClick(), 60000);
    QVERIFY(functionsSent(instrument).constFirst().endsWith(QStringLiteral(",(@103)")));
}

SCN_TEST(TestHand, QCoreApplication)
#include "test_hand.moc"
