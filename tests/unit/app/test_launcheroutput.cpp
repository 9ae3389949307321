#include "acquisition/readdata.h"
#include "app/mainwidget.h"
#include "app/startup.h"
#include "state/globals.h"
#include "support/fakevisa.h"
#include "support/logcapture.h"
#include "support/standardstreams_posix.h"
#include "support/testprogram.h"

#include <QApplication>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>
#include <thread>

using namespace std::chrono_literals;

namespace {

QByteArray shownLine(const MainWidget& window)
{
    return "WID:" + QByteArray::number(static_cast<qulonglong>(window.winId())) +
           ";COLOR:#2b2b2b\n";
}

QByteArray echoOf(int number)
{
    return "receive msg: " + QByteArray::number(number).rightJustified(500, '.') + '\n';
}

/// Makes the window receive lines that it echoes as echoOf() gives them.
void giveLines(MainWidget& window, int first, int count)
{
    for (int number = first; number < first + count; ++number) {
        const QString line = QString::number(number).rightJustified(500, QLatin1Char('.'));
        QMetaObject::invokeMethod(&window, "handleInput", Q_ARG(QString, line));
    }
}

/// Ends the event loop with a message when a test would wait forever.
constexpr int kPatienceMs = 20000;
constexpr int kImpatience = 77;

} // namespace

/// What the window writes to the launcher, byte for byte, without an outside flush.
class TestLauncherOutput : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_log.reset(); }

    void eachShowWritesItsLineOnce();
    void withoutInstrumentTheLineComesWithTheEventLoop();
    void withAnInstrumentTheLineComesBeforeTheEventLoop();
    void linesAreEchoed_data();
    void linesAreEchoed();
    void exitIsEchoedAndQuits();
    void inputOfTheProcessReachesTheWindow();
    void launcherThatDoesNotReadHoldsNothingUp();
    void launcherThatReadsLateGetsAllThatIsKept();
    void lastLinesAreGivenTheirTime();

private:
    FakeVisa m_visa;
    /// Qt Test would write the log to the stream that is tested.
    std::unique_ptr<LogCapture> m_log;
};

void TestLauncherOutput::init()
{
    m_log = std::make_unique<LogCapture>();
    g_resourceName = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");
    m_visa.fail(FakeVisa::Operation::Open, scn::visa::VI_ERROR_RSRC_NFOUND);
    g_instrumentConnected = false;
    g_instrumentId.clear();
}

void TestLauncherOutput::eachShowWritesItsLineOnce()
{
    MainWidget window(nullptr);
    CapturedOutput output;
    window.show();
    QCOMPARE(output.flushed(shownLine(window)), shownLine(window));
    window.show();
    QCOMPARE(output.flushed(shownLine(window)), shownLine(window));
    window.hide();
    QCOMPARE(output.flushed(shownLine(window)), shownLine(window));
    window.show();
    QCOMPARE(output.flushed(shownLine(window) + shownLine(window)),
             shownLine(window) + shownLine(window));
}

void TestLauncherOutput::withoutInstrumentTheLineComesWithTheEventLoop()
{
    MainWidget window(nullptr);
    CapturedOutput output;
    scn::startup::presentWindow(window);
    QCOMPARE(output.flushed(), QByteArray());
    QTRY_COMPARE(output.flushed(), shownLine(window));
}

void TestLauncherOutput::withAnInstrumentTheLineComesBeforeTheEventLoop()
{
    MainWidget window(nullptr);
    g_instrumentConnected = true;
    CapturedOutput output;
    scn::startup::presentWindow(window);
    QCOMPARE(output.flushed(shownLine(window)), shownLine(window));
    // The queued show finds the window shown.
    QCoreApplication::processEvents();
    QCOMPARE(output.flushed(shownLine(window)), shownLine(window));
}

void TestLauncherOutput::linesAreEchoed_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("plain") << QStringLiteral("hello");
    QTest::newRow("blanks") << QStringLiteral("  a b ");
    QTest::newRow("Chinese") << QStringLiteral("你好");
    QTest::newRow("markers are no markers") << QStringLiteral("%1 %2");
    QTest::newRow("capitals") << QStringLiteral("EXIT");
    QTest::newRow("blank behind") << QStringLiteral("exit ");
    QTest::newRow("blank in front") << QStringLiteral(" exit");
    QTest::newRow("zero byte behind") << QStringLiteral("exit") + QChar(0);
}

void TestLauncherOutput::linesAreEchoed()
{
    QFETCH(QString, line);
    MainWidget window(nullptr);
    CapturedOutput output;
    QTimer::singleShot(0, &window, [&window, line] {
        QMetaObject::invokeMethod(&window, "handleInput", Q_ARG(QString, line));
        QTimer::singleShot(0, &window, [] { QCoreApplication::exit(kImpatience); });
    });
    // A quit would end the loop first.
    QCOMPARE(QApplication::exec(), kImpatience);
    const QByteArray echo = "receive msg: " + line.toUtf8() + '\n';
    QCOMPARE(output.flushed(echo), echo);
}

void TestLauncherOutput::exitIsEchoedAndQuits()
{
    MainWidget window(nullptr);
    CapturedOutput output;
    QTimer::singleShot(0, &window, [&window] {
        QMetaObject::invokeMethod(&window, "handleInput", Q_ARG(QString, QStringLiteral("exit")));
        QTimer::singleShot(0, &window, [] { QCoreApplication::exit(kImpatience); });
    });
    QCOMPARE(QApplication::exec(), 0);
    const QByteArray echo = "receive msg: exit\n";
    QCOMPARE(output.flushed(echo), echo);
    QVERIFY(m_log->lines().contains(QStringLiteral("debug: child app received exit cmd!")));
}

void TestLauncherOutput::inputOfTheProcessReachesTheWindow()
{
    m_visa.recover(FakeVisa::Operation::Open);
    m_visa.setReply("*IDN?", "maker,SCN4070A,serial,1.0");
    FedInput input;
    CapturedOutput output;
    // The acquisition can be told to stop as soon as it asks for something.
    std::atomic<bool> mayEnd{false};
    m_visa.setResponder([&input, &mayEnd](const QByteArray& line) {
        if (QThread::currentThread() == ReadData::instance() && mayEnd.exchange(false)) {
            input.write("exit\n");
        }
        return line.contains('?') ? QByteArray("+0\n") : QByteArray();
    });
    scn::ReadDataTiming acquisition;
    acquisition.startDelay = 1ms;
    acquisition.passDelay = 5ms;
    ReadData::instance()->setTiming(acquisition);
    {
        MainWidget window(nullptr);
        QVERIFY(g_instrumentConnected);
        input.write("\nhello\n");
        mayEnd = true;
        QTimer::singleShot(kPatienceMs, &window, [] { QCoreApplication::exit(kImpatience); });
        QCOMPARE(QApplication::exec(), 0);
    }
    QCOMPARE(output.flushed(), QByteArray("receive msg: hello\nreceive msg: exit\n"));
    QVERIFY(m_log->lines().contains(QStringLiteral("debug: child app received exit cmd!")));
}

void TestLauncherOutput::launcherThatDoesNotReadHoldsNothingUp()
{
    PipedOutput output;
    scn::WindowTiming timing;
    timing.launcher.outputPoll = 2ms;
    timing.launcher.farewell = 10ms;
    // The writer must end: otherwise it would go on in the next test's output.
    timing.launcher.lastLine = 20s;
    {
        MainWidget window(nullptr, timing);
        giveLines(window, 0, 1000);
        QTRY_VERIFY_WITH_TIMEOUT(output.isFull(), kPatienceMs);
        window.show();
    }
    // The pipe holds 64 KiB; the window got here all the same, and has gone.
    const QByteArray bytes = output.read(0);
    QVERIFY(bytes.startsWith(echoOf(0) + echoOf(1)));
}

void TestLauncherOutput::launcherThatReadsLateGetsAllThatIsKept()
{
    constexpr int kLines = 6000;
    PipedOutput output;
    MainWidget window(nullptr);
    giveLines(window, 0, 1000);
    QTRY_VERIFY_WITH_TIMEOUT(output.isFull(), kPatienceMs);
    window.show();
    giveLines(window, 1000, kLines - 1000);

    QByteArray bytes;
    while (!bytes.endsWith(echoOf(kLines - 1))) {
        const QByteArray more = output.read(5000);
        QVERIFY(!more.isEmpty());
        bytes += more;
    }
    // In order: what the pipe took at once, the line that is never dropped, the newest echoes.
    const int shown = bytes.indexOf(shownLine(window));
    QVERIFY(shown > 0);
    QVERIFY(bytes.startsWith(echoOf(0)));
    const QByteArray behind = bytes.mid(shown + shownLine(window).size());
    const int kept = behind.size() / echoOf(0).size();
    QVERIFY2(kept > 2000 && kept < 2200, qPrintable(QString::number(kept)));
    QByteArray newest;
    for (int number = kLines - kept; number < kLines; ++number) {
        newest += echoOf(number);
    }
    QCOMPARE(behind, newest);
    QVERIFY(
        m_log->lines().contains(QStringLiteral("warning: 启动器未读取标准输出，最早的回复被丢弃")));
}

void TestLauncherOutput::lastLinesAreGivenTheirTime()
{
    constexpr int kLines = 400;
    QByteArray all;
    for (int number = 0; number < kLines; ++number) {
        all += echoOf(number);
    }
    PipedOutput output;
    QByteArray bytes;
    QSemaphore ending;
    std::thread launcher([&] {
        ending.acquire();
        for (QByteArray more = "?"; bytes.size() < all.size() && !more.isEmpty();) {
            more = output.read(kPatienceMs);
            bytes += more;
        }
    });
    scn::WindowTiming timing;
    timing.launcher.farewell = 20s;
    {
        MainWidget window(nullptr, timing);
        giveLines(window, 0, kLines);
        // The pipe holds 64 KiB of 200.
        QTRY_VERIFY_WITH_TIMEOUT(output.isFull(), kPatienceMs);
        ending.release();
    }
    launcher.join();
    QCOMPARE(bytes + output.read(0), all);
}

SCN_TEST(TestLauncherOutput, QApplication)
#include "test_launcheroutput.moc"
