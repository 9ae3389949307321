#include "support/programprocess.h"
#include "support/programuser.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

namespace {

constexpr int kWatchMs = 10000;

/// Two are the poll of the instrument: a sleep and an exchange.
constexpr double kMostWakesPerSecond = 8;

/// The share of a core.
constexpr double kMostBusy = 0.005;

struct Activity
{
    qint64 wakes = 0;
    qint64 busyNs = 0;
};

QString contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
}

/// What the threads of a process have done so far.
Activity activityOf(qint64 process)
{
    static const QRegularExpression switches(
        QStringLiteral("\nvoluntary_ctxt_switches:\\s+(\\d+)"));
    const QDir threads(QStringLiteral("/proc/%1/task").arg(process));
    Activity sum;
    for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString status = contentOf(threads.filePath(thread + QStringLiteral("/status")));
        sum.wakes += switches.match(status).captured(1).toLongLong();
        const QString times = contentOf(threads.filePath(thread + QStringLiteral("/schedstat")));
        sum.busyNs += times.section(QLatin1Char(' '), 0, 0).toLongLong();
    }
    return sum;
}

} // namespace

/// The program with an instrument and without a scan.
class TestIdle : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(!m_display.name().isEmpty()); }
    void idleProgramHardlyWakes();

private:
    VirtualDisplay m_display;
};

void TestIdle::idleProgramHardlyWakes()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp);
    ProgramProcess program(m_display.name());
    QVERIFY(ProgramUser(m_display, program).bringUp(instrument));
    const Activity before = activityOf(program.processId());
    QElapsedTimer clock;
    clock.start();
    QTest::qWait(kWatchMs);
    const Activity after = activityOf(program.processId());
    const double nanoseconds = static_cast<double>(clock.nsecsElapsed());
    const double wakes = static_cast<double>(after.wakes - before.wakes) / nanoseconds * 1e9;
    const double busy = static_cast<double>(after.busyNs - before.busyNs) / nanoseconds;
    QVERIFY(program.isRunning());
    const QString found = QStringLiteral("%1 wake-ups a second, %2 of a core").arg(wakes).arg(busy);
    qInfo().noquote() << found;
    QVERIFY2(wakes > 0 && wakes < kMostWakesPerSecond, qPrintable(found));
    QVERIFY2(busy > 0 && busy < kMostBusy, qPrintable(found));
}

SCN_TEST(TestIdle, QCoreApplication)
#include "test_idle.moc"
