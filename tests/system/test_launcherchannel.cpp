#include "support/programprocess.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/variable.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTest>

namespace {

/// Long enough for a start under a sanitizer on a busy machine.
constexpr int kEndWaitMs = 20000;

const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");

/// One module with one channel, so that the window appears quickly.
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};

/// Points of the handles of the scroll bars beside and below the recording page; the program's window is at
/// (200, 200).
const QPoint kUprightHandle(506, 290);
const QPoint kLevelHandle(330, 546);
const QColor kHandleColour(0x60, 0x79, 0x8B);

const QString kWid = QStringLiteral("WID:");
const QString kReply = QStringLiteral("receive msg: ");

/// The acquisition runs: it overwrites a stop until then, and an end takes five seconds more. The
/// question is asked once before, by the read-back.
bool hasPolled(const SimulatedInstrument& instrument)
{
    return instrument.received().count(kPoll) >= 2;
}

} // namespace

/// The program as its launcher sees it: argument, standard streams, native window, end.
class TestLauncherChannel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void resourceEndsAtTheFirstSemicolon_data();
    void resourceEndsAtTheFirstSemicolon();
    void platformLibraryIsAskedForTheFirstSection_data();
    void platformLibraryIsAskedForTheFirstSection();
    void platformLibraryServesTheProgram();
    void showTellsHandleAndColor();
    void handleIsThatOfARealWindow();
    void windowIsNotScaled();
    void windowWearsTheDarkStyleSheet();
    void formsFitAtAnyResolution();
    void linesAreEchoed_data();
    void linesAreEchoed();
    void emptyLineGetsNoReply();
    void exitIsEchoedBeforeTheProgramEnds();
    void exitIsFastWithoutStore();
    void exitIsHeededWhileASilentInstrumentIsAsked();
    void onlyTheExactWordEnds();
    void endOfInputDeliversTheLastLineAndGoesOn();
    void launcherThatDiesDoesNotEndTheProgram();
    void launcherThatDoesNotReadDoesNotStopTheProgram();
    void closedStreamIsTheNullDevice_data();
    void closedStreamIsTheNullDevice();
    void withoutInstrumentTheWindowHoldsTheOverlayAlone();
    void withoutArgumentThereIsNoInstrument();
    void closingTheWindowEndsTheProgram();
    void logHasTheVersionAndNoFileAndNoCategory();

private:
    VirtualDisplay m_display;
};

void TestLauncherChannel::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestLauncherChannel::resourceEndsAtTheFirstSemicolon_data()
{
    QTest::addColumn<QString>("behind");
    QTest::newRow("no semicolon") << QString();
    QTest::newRow("one more section") << QStringLiteral(";extra");
    QTest::newRow("two more sections") << QStringLiteral(";extra;more");
}

void TestLauncherChannel::resourceEndsAtTheFirstSemicolon()
{
    QFETCH(QString, behind);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    QVERIFY(!instrument.resource().isEmpty());
    ProgramProcess program(m_display.name());
    program.start({instrument.resource() + behind});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QCOMPARE(instrument.received().value(0), QStringLiteral("*CLS"));
    QCOMPARE(instrument.received().value(1), QStringLiteral("*IDN?"));
}

void TestLauncherChannel::platformLibraryIsAskedForTheFirstSection_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("resource");
    QTest::newRow("first of three")
        << QStringList{QStringLiteral("USB0::1::2::3::0::INSTR;extra;more")}
        << QStringLiteral("USB0::1::2::3::0::INSTR");
    QTest::newRow("whole") << QStringList{QStringLiteral("USB0::1::2::3::0::INSTR")}
                           << QStringLiteral("USB0::1::2::3::0::INSTR");
    QTest::newRow("further arguments are ignored")
        << QStringList{QStringLiteral("first"), QStringLiteral("second")}
        << QStringLiteral("first");
    QTest::newRow("no argument") << QStringList() << QString();
}

void TestLauncherChannel::platformLibraryIsAskedForTheFirstSection()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, resource);
    const Variable path("LD_LIBRARY_PATH", SCN_PLATFORM_LIBRARY_DIR);
    ProgramProcess program(m_display.name());
    program.start(arguments);
    QCOMPARE(program.waitForLines(QStringLiteral("library: viOpen "), 1),
             QStringList{QStringLiteral("library: viOpen 77 ") + resource});
    QCOMPARE(program.lines().constFirst(), QStringLiteral("library: viOpenDefaultRM"));
    // The window opens the instrument, and the meta-types are registered after the window.
    QVERIFY(!program.lines().contains(QStringLiteral("library: meta-types are registered")));
    // Every answer of this library is nonsense; the window appears all the same.
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QVERIFY(program.isRunning());
}

void TestLauncherChannel::platformLibraryServesTheProgram()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    const QString resource = QStringLiteral("PLATFORM0::%1::INSTR").arg(instrument.port());
    const QString connected = QStringLiteral("仪器已连接: SCN SCN4070A ");
    {
        const Variable path("LD_LIBRARY_PATH", SCN_WORKING_LIBRARY_DIR);
        ProgramProcess program(m_display.name());
        program.start({resource});
        QCOMPARE(program.waitForLines(QStringLiteral("library: viOpen "), 1),
                 QStringList{QStringLiteral("library: viOpen ") + resource});
        QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
        QVERIFY2(program.log().contains(connected), qPrintable(program.log()));
    }
    // The provider does not know such a resource.
    ProgramProcess program(m_display.name());
    program.start({resource});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QVERIFY2(!program.log().contains(connected), qPrintable(program.log()));
    program.kill();
    // Through it the program says the same on the wire.
    const SimulatedInstrument other(SimulatedInstrument::Transport::Tcp, kSmallest);
    program.start({other.resource()});
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(other), kEndWaitMs);
    QCOMPARE(instrument.receivedBefore(kPoll), other.receivedBefore(kPoll));
}

void TestLauncherChannel::showTellsHandleAndColor()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    const QStringList lines = program.waitForLines(kWid, 1);
    QCOMPARE(lines.size(), 1);
    QVERIFY2(QRegExp(QStringLiteral("WID:\\d+;COLOR:#2b2b2b")).exactMatch(lines.constFirst()),
             qPrintable(lines.constFirst()));
    // Both the direct and the queued show request it, but the window is shown once.
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
    QCOMPARE(program.waitForLines(kWid, 2, 0).size(), 1);
}

void TestLauncherChannel::handleIsThatOfARealWindow()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    const QString handle = QString::number(program.windowHandle());
    QString geometry;
    QTRY_VERIFY2((geometry = m_display.xdotool({QStringLiteral("getwindowgeometry"), handle}))
                     .contains(QLatin1String("600x400")),
                 qPrintable(geometry));
    QVERIFY2(geometry.contains(QLatin1String("200,200")), qPrintable(geometry));
    QCOMPARE(m_display.xdotool({QStringLiteral("getwindowpid"), handle}).toLongLong(),
             program.processId());
}

void TestLauncherChannel::windowIsNotScaled()
{
    const Variable scale("QT_SCREEN_SCALE_FACTORS", "2");
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    const QString handle = QString::number(program.windowHandle());
    QString geometry;
    QTRY_VERIFY2((geometry = m_display.xdotool({QStringLiteral("getwindowgeometry"), handle}))
                     .contains(QLatin1String("600x400")),
                 qPrintable(geometry));
}

void TestLauncherChannel::windowWearsTheDarkStyleSheet()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    // Only the style sheet colours the scroll bar handle beside the recording page. The busy overlay
    // covers it for two seconds.
    QTRY_COMPARE_WITH_TIMEOUT(m_display.colorAt(kUprightHandle.x(), kUprightHandle.y()),
                              kHandleColour, 20000);
}

void TestLauncherChannel::formsFitAtAnyResolution()
{
    const VirtualDisplay fine(120);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(fine.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(fine.colorAt(kUprightHandle.x(), kUprightHandle.y()), kHandleColour,
                              20000);
    // A page too wide for its pane would have a scroll bar below it.
    QVERIFY(fine.colorAt(kLevelHandle.x(), kLevelHandle.y()) != kHandleColour);
}

void TestLauncherChannel::linesAreEchoed_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<QString>("echo");
    QTest::newRow("plain") << QByteArray("hello\n") << QStringLiteral("hello");
    QTest::newRow("carriage return") << QByteArray("hello\r\n") << QStringLiteral("hello");
    QTest::newRow("blanks are kept") << QByteArray("  a b \n") << QStringLiteral("  a b ");
    QTest::newRow("Chinese") << QByteArray("你好\n") << QStringLiteral("你好");
    QTest::newRow("long") << QByteArray(60000, 'x') + '\n' << QString(60000, QLatin1Char('x'));
}

void TestLauncherChannel::linesAreEchoed()
{
    QFETCH(QByteArray, input);
    QFETCH(QString, echo);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write(input);
    QCOMPARE(program.waitForLines(kReply, 1), QStringList{kReply + echo});
}

void TestLauncherChannel::emptyLineGetsNoReply()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write("\n\r\nlast\n");
    QCOMPARE(program.waitForLines(kReply, 1), QStringList{kReply + QStringLiteral("last")});
}

void TestLauncherChannel::exitIsEchoedBeforeTheProgramEnds()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY(!program.crashed());
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.lines().constLast(), QStringLiteral("receive msg: exit"));
    QVERIFY(program.log().contains(QLatin1String("child app received exit cmd!")));
    // Also an acquisition that had only begun ends by itself.
    QVERIFY(!program.log().contains(QStringLiteral("强制终止")));
}

void TestLauncherChannel::exitIsFastWithoutStore()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
    QElapsedTimer timer;
    timer.start();
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(timer.elapsed() < 500, qPrintable(QString::number(timer.elapsed())));
}

void TestLauncherChannel::exitIsHeededWhileASilentInstrumentIsAsked()
{
    SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp,
                                   {QStringLiteral("--slots"), QStringLiteral("1:15,2:15,3:15")});
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    const auto isReadBack = [&instrument] {
        return !instrument.received().filter(QStringLiteral("ROUT:CHAN:LAB?")).isEmpty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(isReadBack(), kEndWaitMs);
    instrument.freeze();
    program.write("exit\n");
    // It waits for one exchange, out of hundreds.
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
    QCOMPARE(program.exitCode(), 0);
    instrument.thaw();
}

void TestLauncherChannel::onlyTheExactWordEnds()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write("EXIT\nexit \n exit\n");
    QCOMPARE(program.waitForLines(kReply, 3),
             (QStringList{QStringLiteral("receive msg: EXIT"), QStringLiteral("receive msg: exit "),
                          QStringLiteral("receive msg:  exit")}));
    QVERIFY(!program.waitForEnd(500));
}

void TestLauncherChannel::endOfInputDeliversTheLastLineAndGoesOn()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write("no line feed");
    program.closeInput();
    QCOMPARE(program.waitForLines(kReply, 1), QStringList{kReply + QStringLiteral("no line feed")});
    QVERIFY(!program.waitForEnd(500));
}

void TestLauncherChannel::launcherThatDiesDoesNotEndTheProgram()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.startForOneLine({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write("nobody reads the echo\nnor this one\n");
    program.closeInput();
    QVERIFY(!program.waitForEnd(1000));
    QVERIFY(program.isRunning());
    const int polls = instrument.received().size();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().size() > polls, 5000);
}

void TestLauncherChannel::launcherThatDoesNotReadDoesNotStopTheProgram()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.startForOneLine({instrument.resource()}, ProgramProcess::Reader::StaysAndSleeps);
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
    for (int line = 0; line < 500; ++line) {
        program.write(QByteArray(500, 'x') + '\n');
    }
    // A window that hangs would neither store readings nor listen.
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(program.log().contains(QLatin1String("child app received exit cmd!")),
             qPrintable(program.log()));
}

void TestLauncherChannel::closedStreamIsTheNullDevice_data()
{
    QTest::addColumn<int>("descriptor");
    QTest::newRow("input") << 0;
    QTest::newRow("output") << 1;
    QTest::newRow("errors") << 2;
}

void TestLauncherChannel::closedStreamIsTheNullDevice()
{
    QFETCH(int, descriptor);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.startWithout(descriptor, {instrument.resource()});
    const QString process = QString::number(program.processId());
    QString handle;
    const QStringList search = {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                QStringLiteral("--pid"), process};
    QTRY_VERIFY_WITH_TIMEOUT(!(handle = m_display.xdotool(search)).isEmpty(), kEndWaitMs);
    QCOMPARE(
        QFileInfo(QStringLiteral("/proc/%1/fd/%2").arg(process).arg(descriptor)).symLinkTarget(),
        QStringLiteral("/dev/null"));
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
    // The window still reads from its display.
    QVERIFY(m_display.closeWindow(handle.section(QLatin1Char('\n'), 0, 0).toULongLong()));
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
}

void TestLauncherChannel::withoutInstrumentTheWindowHoldsTheOverlayAlone()
{
    ProgramProcess program(m_display.name());
    // The loopback's discard port: nobody listens.
    program.start({QStringLiteral("TCPIP0::127.0.0.1::9::SOCKET")});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    program.write("exit\n");
    QVERIFY(!program.waitForEnd(1000));
    QCOMPARE(program.waitForLines(kReply, 1, 0), QStringList());
}

void TestLauncherChannel::withoutArgumentThereIsNoInstrument()
{
    ProgramProcess program(m_display.name());
    program.start({});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QVERIFY(program.isRunning());
}

void TestLauncherChannel::closingTheWindowEndsTheProgram()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
    QVERIFY(m_display.closeWindow(program.windowHandle()));
    QVERIFY(program.waitForEnd(kEndWaitMs));
    QVERIFY2(!program.crashed(), qPrintable(program.log()));
}

void TestLauncherChannel::logHasTheVersionAndNoFileAndNoCategory()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    ProgramProcess program(m_display.name());
    program.start({instrument.resource()});
    QCOMPARE(program.waitForLines(kWid, 1).size(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(hasPolled(instrument), kEndWaitMs);
    program.write("exit\n");
    QVERIFY(program.waitForEnd(kEndWaitMs));
    const QStringList log = program.log().split(QLatin1Char('\n'));
    QVERIFY2(log.contains(QStringLiteral("child app received exit cmd!")),
             qPrintable(program.log()));
    QVERIFY2(log.constFirst().startsWith(QStringLiteral("SCN4070A 控制软件 " SCN_VERSION)),
             qPrintable(program.log()));
}

SCN_TEST(TestLauncherChannel, QCoreApplication)
#include "test_launcherchannel.moc"
