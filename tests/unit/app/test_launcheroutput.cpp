#include "app/globals.h"
#include "app/mainwidget.h"
#include "app/startup.h"
#include "support/fakevisa.h"
#include "support/standardstreams_posix.h"

#include <QApplication>
#include <QTest>
#include <QTimer>

namespace {

QByteArray shownLine(const MainWidget& window)
{
    return "WID:" + QByteArray::number(static_cast<qulonglong>(window.winId())) +
           ";COLOR:#2b2b2b\n";
}

/// Ends the event loop, and says so, when a test would wait for ever.
constexpr int kPatienceMs = 20000;
constexpr int kImpatience = 77;

} // namespace

/// What the window itself writes to the launcher, byte for byte, without a flush from outside.
class TestLauncherOutput : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void eachShowWritesItsLineOnce();
    void withoutInstrumentTheLineComesWithTheEventLoop();
    void withAnInstrumentTheLineComesBeforeTheEventLoop();
    void linesAreEchoed_data();
    void linesAreEchoed();
    void exitIsEchoedAndQuits();
    void inputOfTheProcessReachesTheWindow();

private:
    FakeVisa m_visa;
};

void TestLauncherOutput::init()
{
    g_resourceName = QStringLiteral("TCPIP0::127.0.0.1::5025::SOCKET");
    m_visa.fail(FakeVisa::Operation::Open, VI_ERROR_RSRC_NFOUND);
    g_instrumentConnected = false;
    g_instrumentId.clear();
}

void TestLauncherOutput::eachShowWritesItsLineOnce()
{
    MainWidget window(nullptr);
    CapturedOutput output;
    window.show();
    QCOMPARE(output.flushed(), shownLine(window));
    window.show();
    QCOMPARE(output.flushed(), shownLine(window));
    window.hide();
    QCOMPARE(output.flushed(), shownLine(window));
    window.show();
    QCOMPARE(output.flushed(), shownLine(window) + shownLine(window));
}

void TestLauncherOutput::withoutInstrumentTheLineComesWithTheEventLoop()
{
    MainWidget window(nullptr);
    CapturedOutput output;
    Startup::presentWindow(window);
    QCOMPARE(output.flushed(), QByteArray());
    QTRY_COMPARE(output.flushed(), shownLine(window));
}

void TestLauncherOutput::withAnInstrumentTheLineComesBeforeTheEventLoop()
{
    MainWidget window(nullptr);
    g_instrumentConnected = true;
    CapturedOutput output;
    Startup::presentWindow(window);
    QCOMPARE(output.flushed(), shownLine(window));
    // The queued show finds the window shown.
    QTest::qWait(50);
    QCOMPARE(output.flushed(), shownLine(window));
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
    QCOMPARE(output.flushed(), QByteArray("receive msg: ") + line.toUtf8() + '\n');
}

void TestLauncherOutput::exitIsEchoedAndQuits()
{
    MainWidget window(nullptr);
    CapturedOutput output;
    QTest::ignoreMessage(QtDebugMsg, "child app received exit cmd!");
    QTimer::singleShot(0, &window, [&window] {
        QMetaObject::invokeMethod(&window, "handleInput", Q_ARG(QString, QStringLiteral("exit")));
        QTimer::singleShot(0, &window, [] { QCoreApplication::exit(kImpatience); });
    });
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(output.flushed(), QByteArray("receive msg: exit\n"));
}

void TestLauncherOutput::inputOfTheProcessReachesTheWindow()
{
    m_visa.recover(FakeVisa::Operation::Open);
    m_visa.setReply("*IDN?", "maker,SCN4070A,serial,1.0");
    FedInput input;
    CapturedOutput output;
    QTest::ignoreMessage(QtDebugMsg, "child app received exit cmd!");
    {
        MainWidget window(nullptr);
        QVERIFY(g_instrumentConnected);
        input.write("\nhello\n");
        // The acquisition thread overwrites a stop in its first second.
        QTimer::singleShot(1200, &window, [&input] { input.write("exit\n"); });
        QTimer::singleShot(kPatienceMs, &window, [] { QCoreApplication::exit(kImpatience); });
        QCOMPARE(QApplication::exec(), 0);
    }
    QCOMPARE(output.flushed(), QByteArray("receive msg: hello\nreceive msg: exit\n"));
}

QTEST_MAIN(TestLauncherOutput)
#include "test_launcheroutput.moc"
