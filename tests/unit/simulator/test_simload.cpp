#include "support/simulatedinstrument.h"
#include "support/streamclient_posix.h"
#include "support/testprogram.h"

#include <QtTest>

#include <unistd.h>

namespace {

constexpr int kChannels = 1000;
constexpr int kReadingsPerSecond = 10000;
constexpr int kSeconds = 5;

/// The pace of the fetches is part of the load: this test measures real time.
constexpr int kFetchEveryMs = 100;

/// Processor time used by a process, in seconds.
double processorTime(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly)) {
        return -1;
    }
    // The name in parentheses may contain blanks; fields 14 and 15 are the times in ticks.
    const QByteArray text = file.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return (fields[11].toDouble() + fields[12].toDouble()) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
}

} // namespace

/// The simulator's capacity: a thousand channels at ten thousand readings a second, fetched with
/// all fields as they arrive, on one core.
class TestSimLoad : public QObject
{
    Q_OBJECT

private slots:
    void thousandChannelsTakeAFractionOfACore();
};

void TestSimLoad::thousandChannelsTakeAFractionOfACore()
{
    QStringList modules;
    for (int slot = 1; slot <= kChannels / 40; ++slot) {
        modules << QStringLiteral("%1:8").arg(slot);
    }
    SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                   {QStringLiteral("--slots"), modules.join(QLatin1Char(',')),
                                    QStringLiteral("--rate"), QString::number(kReadingsPerSecond)});
    StreamClient client;
    QVERIFY(client.connectTo(instrument.port()));
    QVERIFY(client.send("ROUT:SCAN (@101:2540)\n"));
    QVERIFY(client.send("FORM:READ:ALAR ON;CHAN ON;TIME ON;UNIT ON;TIME:TYPE ABS\n"));
    QVERIFY(client.send(QByteArray("TRIG:COUN ") +
                        QByteArray::number(kSeconds * kReadingsPerSecond / kChannels) + '\n'));
    QVERIFY(client.send("INIT\n"));

    QElapsedTimer timer;
    timer.start();
    const double before = processorTime(instrument.processId());
    int readings = 0;
    while (readings < kSeconds * kReadingsPerSecond && timer.elapsed() < 4000 * kSeconds) {
        QTest::qWait(kFetchEveryMs);
        const int waiting = client.ask("DATA:POIN?").toInt();
        if (waiting > 0) {
            const QByteArray reply = client.ask("R? " + QByteArray::number(waiting));
            readings += (reply.count(',') + 1) / 9;
        }
    }
    const double elapsedS = static_cast<double>(timer.elapsed()) / 1000;
    const double used = processorTime(instrument.processId()) - before;
    qInfo("%d readings in %.2f s, %.2f s of processor time: %.0f %% of a core", readings, elapsedS,
          used, 100 * used / elapsedS);
    QCOMPARE(readings, kSeconds * kReadingsPerSecond);
    QCOMPARE(client.ask("STAT:OPER:COND?;:SYST:ERR?"), QByteArray("+256;+0,\"No error\""));
    QVERIFY(elapsedS < kSeconds * 1.2);
    QVERIFY(used < elapsedS / 2);
}

SCN_TEST(TestSimLoad, QCoreApplication)
#include "test_simload.moc"
