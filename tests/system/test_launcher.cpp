#include "support/launcherprocess.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/texts.h"
#include "support/virtualdisplay.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

namespace {

/// Long enough for a start, or an end, under a sanitizer on a busy machine.
constexpr int kStartWaitMs = 60000;
constexpr int kEndWaitMs = 30000;

/// One module with one channel, so that the window appears quickly.
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};

/// Whether the acquisition runs, by the simulator's transcript: it overwrites a stop until then, and an
/// end takes five seconds more. The question is asked once before, by the read-back.
bool hasPolled(const QString& transcript)
{
    QFile file(transcript);
    return file.open(QIODevice::ReadOnly) && file.readAll().count("STAT:OPER:EVEN?") >= 2;
}

bool isThere(qint64 process)
{
    return QFile::exists(QStringLiteral("/proc/%1").arg(process));
}

} // namespace

/// The launcher with the real program.
class TestLauncher : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void simulatorAndProgramComeAndGoWithIt_data();
    void simulatorAndProgramComeAndGoWithIt();
    void resourceIsHandedOn();
    void closingItsWindowEndsTheProgram();
    void programThatDiesLeavesItAlive();
    void itOpensInsideASmallScreen();
    void itRemembersItsPlace();
    void helpAndVersionNeedNoDisplay_data();
    void helpAndVersionNeedNoDisplay();
    void missingDisplayIsTold_data();
    void missingDisplayIsTold();
    void platformOfTheDesktopIsOverruled_data();
    void platformOfTheDesktopIsOverruled();
    void signalEndsAScanWithoutAQuestion_data();
    void signalEndsAScanWithoutAQuestion();
    void programOutlivesALauncherThatDies();
    void closedTerminalLeavesItAlone();
    void displayThatEndsTakesAllWithIt();
    void secondOnAnInstrumentIsRefused();
    void instrumentOfALeftProgramIsRefused();
    void whatCannotStartIsToldAndEndsIt_data();
    void whatCannotStartIsToldAndEndsIt();

private:
    bool waitForEmbedding() const { return LauncherProcess::waitForEmbeddingOn(m_display); }
    qulonglong window() const { return LauncherProcess::windowOn(m_display); }

    VirtualDisplay m_display;
};

void TestLauncher::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

void TestLauncher::simulatorAndProgramComeAndGoWithIt_data()
{
    QTest::addColumn<bool>("isInTerminal");
    QTest::newRow("SIGTERM") << false;
    QTest::newRow("key in its terminal") << true;
}

void TestLauncher::simulatorAndProgramComeAndGoWithIt()
{
    QFETCH(bool, isInTerminal);
    constexpr char kControlC[] = "\x03";
    LauncherProcess launcher(m_display.name());
    if (isInTerminal) {
        launcher.startInTerminal(kSmallest);
    } else {
        launcher.start(kSmallest);
    }
    QVERIFY(waitForEmbedding());
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    const qint64 simulator = launcher.child(QStringLiteral("scn4070a-sim"));
    QVERIFY(program != 0);
    QVERIFY(simulator != 0);
    if (isInTerminal) {
        launcher.type(kControlC);
    } else {
        launcher.terminate();
    }
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
    QVERIFY(!isThere(program));
    QVERIFY(!isThere(simulator));
    QCOMPARE(launcher.locks(), QStringList());
    const QString log = launcher.log();
    QVERIFY2(log.contains(QLatin1String("child app received exit cmd!")), qPrintable(log));
}

void TestLauncher::resourceIsHandedOn()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherProcess launcher(m_display.name());
    launcher.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
    QCOMPARE(launcher.child(QStringLiteral("scn4070a-sim")), qint64(0));
    QCOMPARE(instrument.received().value(0), QStringLiteral("*CLS"));
    const auto hasPolled = [&instrument] {
        return instrument.received().count(QStringLiteral("STAT:OPER:EVEN?")) >= 2;
    };
    QVERIFY(QTest::qWaitFor(hasPolled, kStartWaitMs));
}

void TestLauncher::closingItsWindowEndsTheProgram()
{
    const QTemporaryDir directory;
    const QString transcript = directory.filePath(QStringLiteral("transcript"));
    LauncherProcess launcher(m_display.name());
    launcher.start(kSmallest + QStringList{QStringLiteral("--transcript"), transcript});
    QVERIFY(waitForEmbedding());
    QVERIFY(QTest::qWaitFor([&transcript] { return hasPolled(transcript); }, kStartWaitMs));
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    QVERIFY(m_display.closeWindow(window()));
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
    QVERIFY(!isThere(program));
}

void TestLauncher::programThatDiesLeavesItAlive()
{
    LauncherProcess launcher(m_display.name());
    launcher.start(kSmallest);
    QVERIFY(waitForEmbedding());
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    const qint64 simulator = launcher.child(QStringLiteral("scn4070a-sim"));
    QVERIFY(program > 0);
    ::kill(static_cast<pid_t>(program), SIGKILL);
    // Its simulated instrument goes with it.
    QTRY_VERIFY_WITH_TIMEOUT(!isThere(simulator), kEndWaitMs);
    QVERIFY(window() != 0);
    launcher.terminate();
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
}

void TestLauncher::itOpensInsideASmallScreen()
{
    const VirtualDisplay small(0, QSize(1280, 720));
    LauncherProcess launcher(small.name());
    launcher.start({});
    QRect place;
    QTRY_VERIFY_WITH_TIMEOUT((place = small.placeOf(LauncherProcess::windowOn(small))).isValid(),
                             kStartWaitMs);
    QVERIFY2(QRect(0, 0, 1280, 720).contains(place), qPrintable(textOf(place)));
    QVERIFY2(place.width() > 1200 && place.height() > 600, qPrintable(textOf(place)));
}

void TestLauncher::itRemembersItsPlace()
{
    LauncherProcess launcher(m_display.name());
    launcher.start({});
    QTRY_VERIFY_WITH_TIMEOUT(window() != 0, kStartWaitMs);
    const QString handle = QString::number(window());
    m_display.xdotool({QStringLiteral("windowmove"), QStringLiteral("--sync"), handle,
                       QStringLiteral("30"), QStringLiteral("40")});
    m_display.xdotool({QStringLiteral("windowsize"), QStringLiteral("--sync"), handle,
                       QStringLiteral("900"), QStringLiteral("600")});
    QVERIFY(m_display.closeWindow(handle.toULongLong()));
    QVERIFY(launcher.waitForEnd());
    launcher.start({});
    QTRY_VERIFY_WITH_TIMEOUT(window() != 0, kStartWaitMs);
    QTRY_COMPARE(m_display.placeOf(window()), QRect(30, 40, 900, 600));
}

void TestLauncher::helpAndVersionNeedNoDisplay_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << QStringLiteral("--help") << QStringLiteral("--simulated");
    QTest::newRow("version") << QStringLiteral("--version") << QStringLiteral("scn4070a-launcher ");
}

void TestLauncher::helpAndVersionNeedNoDisplay()
{
    QFETCH(QString, option);
    QFETCH(QString, text);
    LauncherProcess launcher{QString()};
    launcher.start({option});
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
    const QString output = launcher.output();
    QVERIFY2(output.contains(text), qPrintable(output));
    QCOMPARE(launcher.errors(), QString());
}

void TestLauncher::missingDisplayIsTold_data()
{
    QTest::addColumn<QString>("display");
    QTest::addColumn<QString>("platform");
    QTest::addColumn<QString>("text");
    QTest::newRow("not set") << QString() << QString() << QStringLiteral("DISPLAY is not set");
    QTest::newRow("does not answer")
        << QStringLiteral(":4070") << QString() << QStringLiteral("\":4070\"");
    QTest::newRow("Wayland wanted")
        << QString() << QStringLiteral("wayland") << QStringLiteral("DISPLAY is not set");
}

void TestLauncher::missingDisplayIsTold()
{
    QFETCH(QString, display);
    QFETCH(QString, platform);
    QFETCH(QString, text);
    LauncherProcess launcher(display);
    launcher.setVariable(QStringLiteral("QT_QPA_PLATFORM"), platform);
    launcher.start(kSmallest);
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 1);
    const QString errors = launcher.errors();
    QVERIFY2(errors.contains(QLatin1String("there is no display")), qPrintable(errors));
    QVERIFY2(errors.contains(text), qPrintable(errors));
}

void TestLauncher::platformOfTheDesktopIsOverruled_data()
{
    QTest::addColumn<QString>("platform");
    QTest::newRow("Wayland") << QStringLiteral("wayland");
    QTest::newRow("Wayland first") << QStringLiteral("wayland;xcb");
    QTest::newRow("unknown") << QStringLiteral("nonsense");
}

void TestLauncher::platformOfTheDesktopIsOverruled()
{
    QFETCH(QString, platform);
    LauncherProcess launcher(m_display.name());
    launcher.setVariable(QStringLiteral("QT_QPA_PLATFORM"), platform);
    launcher.start(kSmallest);
    QVERIFY2(waitForEmbedding(), qPrintable(launcher.errors()));
    launcher.terminate();
    QVERIFY(launcher.waitForEnd());
    QCOMPARE(launcher.exitCode(), 0);
}

void TestLauncher::signalEndsAScanWithoutAQuestion_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestLauncher::signalEndsAScanWithoutAQuestion()
{
    QFETCH(int, signal);
    LauncherProcess launcher(m_display.name());
    launcher.start({QStringLiteral("--program"), QStringLiteral(SCN_FAKE_CHILD),
                    QStringLiteral("scanning=%1").arg(QCoreApplication::applicationPid())});
    QTRY_VERIFY_WITH_TIMEOUT(launcher.log().contains(QStringLiteral("扫描开始")), kStartWaitMs);
    const qint64 child = launcher.child(QStringLiteral("scn_fake_child"));
    QVERIFY(child > 0);
    ::kill(static_cast<pid_t>(launcher.processId()), signal);
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
    QVERIFY(!isThere(child));
    QCOMPARE(launcher.locks(), QStringList());
}

void TestLauncher::programOutlivesALauncherThatDies()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherProcess launcher(m_display.name());
    launcher.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    QVERIFY(program > 0);
    launcher.kill();
    // Its window went with the launcher's; its work continues.
    const int polls = instrument.received().size();
    const bool polled =
        QTest::qWaitFor([&] { return instrument.received().size() >= polls + 3; }, kStartWaitMs);
    ::kill(static_cast<pid_t>(program), SIGKILL);
    QVERIFY(polled);
}

void TestLauncher::closedTerminalLeavesItAlone()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherProcess launcher(m_display.name());
    launcher.startInTerminal({instrument.resource()});
    QVERIFY2(waitForEmbedding(), qPrintable(launcher.output()));
    const qint64 process = launcher.processId();
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    QVERIFY(program != 0);
    launcher.closeTerminal();
    const int polls = instrument.received().size();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().size() >= polls + 3, kStartWaitMs);
    QVERIFY(isThere(process));
    QVERIFY(waitForEmbedding());
    // Its window asks as always.
    QVERIFY(m_display.closeWindow(window()));
    QTRY_VERIFY_WITH_TIMEOUT(!isThere(process), kEndWaitMs);
    QVERIFY(!isThere(program));
}

void TestLauncher::displayThatEndsTakesAllWithIt()
{
    auto display = std::make_unique<VirtualDisplay>();
    QVERIFY2(!display->name().isEmpty(), "Xvfb did not start");
    LauncherProcess launcher(display->name());
    launcher.start(kSmallest);
    QVERIFY(LauncherProcess::waitForEmbeddingOn(*display));
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    const qint64 simulator = launcher.child(QStringLiteral("scn4070a-sim"));
    QVERIFY(program != 0);
    QVERIFY(simulator != 0);
    display.reset();
    QVERIFY(launcher.waitForEnd());
    QTRY_VERIFY_WITH_TIMEOUT(!isThere(program), kEndWaitMs);
    QTRY_VERIFY_WITH_TIMEOUT(!isThere(simulator), kEndWaitMs);
}

void TestLauncher::secondOnAnInstrumentIsRefused()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherProcess first(m_display.name());
    first.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
    const QStringList before = instrument.received().filter(QStringLiteral("*IDN?"));

    LauncherProcess second(m_display.name());
    second.start({instrument.resource().toLower()});
    const QString owner =
        QStringLiteral("正被 scn4070a-launcher（进程 %1，").arg(first.processId());
    QVERIFY(second.waitForError(owner));
    QCOMPARE(second.child(QStringLiteral("scn4070a")), qint64(0));
    QCOMPARE(instrument.received().filter(QStringLiteral("*IDN?")), before);
    QVERIFY(first.child(QStringLiteral("scn4070a")) != 0);
}

void TestLauncher::instrumentOfALeftProgramIsRefused()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherProcess first(m_display.name());
    first.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
    const qint64 program = first.child(QStringLiteral("scn4070a"));
    first.kill();
    QVERIFY(isThere(program));

    LauncherProcess second(m_display.name());
    second.start({instrument.resource()});
    QVERIFY(second.waitForError(QStringLiteral("正被 scn4070a（进程 %1，").arg(program)));
    QVERIFY(second.waitForError(QStringLiteral("使用。它没有窗口，仍在记录")));
    second.terminate();
    QVERIFY(second.waitForEnd());

    ::kill(static_cast<pid_t>(program), SIGKILL);
    QVERIFY(QTest::qWaitFor([program] { return !isThere(program); }, kEndWaitMs));
    LauncherProcess third(m_display.name());
    third.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
}

void TestLauncher::whatCannotStartIsToldAndEndsIt_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("text");
    QTest::newRow("program") << QStringList{QStringLiteral("--program"),
                                            QStringLiteral("/no/such/program"),
                                            QStringLiteral("ASRL1::INSTR")}
                             << QStringLiteral("the program did not start:");
    QTest::newRow("simulator") << QStringList{QStringLiteral("--simulator"),
                                              QStringLiteral("/no/such/simulator")}
                               << QStringLiteral("the simulator did not start:");
    QTest::newRow("option") << QStringList{QStringLiteral("--nonsense")}
                            << QStringLiteral("Unknown option 'nonsense'");
}

void TestLauncher::whatCannotStartIsToldAndEndsIt()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, text);
    LauncherProcess launcher(m_display.name());
    launcher.start(arguments);
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 1);
    const QString errors = launcher.errors();
    QVERIFY2(errors.contains(text), qPrintable(errors));
}

SCN_TEST(TestLauncher, QCoreApplication)
#include "test_launcher.moc"
