#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QColor>
#include <QElapsedTimer>
#include <QTest>

namespace {

constexpr int kWaitMs = 60000;

/// Where the pointer rests, a point in a name field of another row, and a point outside the pages.
const QPoint kRestingPlace(1000, 700);
const QPoint kNameField(600, 129 + 2 * 33);
const QPoint kNoPage(1400, 885);

/// The middle of the table, where the lock's bar is.
const QPoint kBar(908, 448);

} // namespace

/// The lock over the real window, under a real pointer.
class TestLock : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void veilStandsUnderAPointerThatRestsOnTheTable();

private:
    VirtualDisplay m_display;
};

void TestLock::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestLock::veilStandsUnderAPointerThatRestsOnTheTable()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                         {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                          QStringLiteral("--rate"), QStringLiteral("40")});
    ProgramProcess program(m_display.name());
    const ProgramUser user(m_display, program);
    QVERIFY(ProgramUser(m_display, program).bringUp(instrument));
    QVERIFY(user.chooseChannels(instrument));
    m_display.movePointer(kNoPage.x(), kNoPage.y());
    const auto field = [this] { return m_display.colorAt(kNameField.x(), kNameField.y()); };
    QTest::qWait(500);
    const QColor open = field();

    // The busy overlay is up while the series are built; the pointer is at rest before it goes.
    user.clickStart();
    m_display.movePointer(kRestingPlace.x(), kRestingPlace.y());
    QVERIFY(!instrument.received().contains(QStringLiteral("INIT")));
    const auto readingsCome = [&instrument] {
        return instrument.received().filter(QStringLiteral("R? ")).size() >= 2;
    };
    QVERIFY(QTest::qWaitFor(readingsCome, kWaitMs));
    const QColor resting = field();

    // The veil comes and goes with the pointer.
    m_display.movePointer(kNoPage.x(), kNoPage.y());
    QTRY_COMPARE(field(), open);
    m_display.movePointer(kRestingPlace.x(), kRestingPlace.y());
    QTRY_VERIFY(field() != open);
    QCOMPARE(resting, field());

    // Held under the pointer for a second, the bar ends the run half a second later.
    m_display.movePointer(kBar.x(), kBar.y());
    QElapsedTimer held;
    held.start();
    m_display.press();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().contains(QStringLiteral("ABOR")), kWaitMs);
    QVERIFY2(held.elapsed() >= 1500, qPrintable(QString::number(held.elapsed())));
    m_display.release();
    QTRY_COMPARE(field(), open);

    program.write("exit\n");
    QVERIFY(program.waitForEnd(kWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
}

SCN_TEST(TestLock, QCoreApplication)
#include "test_lock.moc"
