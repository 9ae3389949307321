#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

namespace {

/// Long enough for a start, or an end, under a sanitizer on a busy machine.
constexpr int kStartWaitMs = 60000;
constexpr int kEndWaitMs = 30000;

/// One module with one channel, so that the window appears quickly.
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};

const QString kProgramTitle = QStringLiteral("SCN4070A 控制软件");
const QString kLauncherTitle = QStringLiteral("SCN4070A");

QString commandOf(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

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

/// The launcher as a process on a display.
class Launcher
{
public:
    explicit Launcher(const QString& display)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), display);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("XDG_STATE_HOME"), m_home.path());
        m_process.setProcessEnvironment(environment);
    }
    ~Launcher()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    void start(const QStringList& arguments)
    {
        m_process.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-launcher"), arguments);
        m_process.waitForStarted();
    }
    void terminate() { m_process.terminate(); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    bool waitForEnd() { return m_process.waitForFinished(kEndWaitMs); }
    bool crashed() const { return m_process.exitStatus() == QProcess::CrashExit; }
    int exitCode() const { return m_process.exitCode(); }
    qint64 processId() const { return m_process.processId(); }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()); }
    /// The log files of its children.
    QString log() const
    {
        QString text;
        QDirIterator files(m_home.path(), {QStringLiteral("*.log")}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly)) {
                text += QString::fromUtf8(file.readAll());
            }
        }
        return text;
    }

    /// Its child process of that name; 0 if there is none.
    qint64 child(const QString& name) const
    {
        const qint64 own = m_process.processId();
        QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(own));
        if (!file.open(QIODevice::ReadOnly)) {
            return 0;
        }
        const QList<QByteArray> children = file.readAll().simplified().split(' ');
        for (const QByteArray& each : children) {
            if (commandOf(each.toLongLong()) == name) {
                return each.toLongLong();
            }
        }
        return 0;
    }

private:
    const QTemporaryDir m_home;
    QProcess m_process;
};

} // namespace

/// The reference launcher with the real program.
class TestLauncher : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void simulatorAndProgramComeAndGoWithIt();
    void resourceIsHandedOn();
    void closingItsWindowEndsTheProgram();
    void programThatDiesEndsIt();
    void programOutlivesALauncherThatDies();
    void secondOnAnInstrumentIsRefused();
    void instrumentOfALeftProgramIsRefused();
    void whatCannotStartIsToldAndEndsIt_data();
    void whatCannotStartIsToldAndEndsIt();

private:
    bool waitForEmbedding() const;
    qulonglong windowOf(const QString& title) const;

    VirtualDisplay m_display;
};

void TestLauncher::initTestCase()
{
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
}

qulonglong TestLauncher::windowOf(const QString& title) const
{
    const QString found =
        m_display.xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                           QStringLiteral("--name"), QLatin1Char('^') + title + QLatin1Char('$')});
    return found.section(QLatin1Char('\n'), 0, 0).toULongLong();
}

/// Waits until the program's window is inside the launcher's.
bool TestLauncher::waitForEmbedding() const
{
    return QTest::qWaitFor(
        [this] {
            const qulonglong launcher = windowOf(kLauncherTitle);
            qulonglong window = windowOf(kProgramTitle);
            while (window != 0 && window != launcher) {
                window = m_display.parentOf(window);
            }
            return window != 0;
        },
        kStartWaitMs);
}

void TestLauncher::simulatorAndProgramComeAndGoWithIt()
{
    Launcher launcher(m_display.name());
    launcher.start(kSmallest);
    QVERIFY(waitForEmbedding());
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    const qint64 simulator = launcher.child(QStringLiteral("scn4070a-sim"));
    QVERIFY(program != 0);
    QVERIFY(simulator != 0);
    launcher.terminate();
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
    QVERIFY(!isThere(program));
    QVERIFY(!isThere(simulator));
    const QString log = launcher.log();
    QVERIFY2(log.contains(QLatin1String("child app received exit cmd!")), qPrintable(log));
}

void TestLauncher::resourceIsHandedOn()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    Launcher launcher(m_display.name());
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
    Launcher launcher(m_display.name());
    launcher.start(kSmallest + QStringList{QStringLiteral("--transcript"), transcript});
    QVERIFY(waitForEmbedding());
    QVERIFY(QTest::qWaitFor([&transcript] { return hasPolled(transcript); }, kStartWaitMs));
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    QVERIFY(m_display.closeWindow(windowOf(kLauncherTitle)));
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
    QVERIFY(!isThere(program));
}

void TestLauncher::programThatDiesEndsIt()
{
    Launcher launcher(m_display.name());
    launcher.start(kSmallest);
    QVERIFY(waitForEmbedding());
    const qint64 program = launcher.child(QStringLiteral("scn4070a"));
    const qint64 simulator = launcher.child(QStringLiteral("scn4070a-sim"));
    QVERIFY(program > 0);
    ::kill(static_cast<pid_t>(program), SIGKILL);
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QVERIFY(launcher.exitCode() != 0);
    QVERIFY(!isThere(simulator));
}

void TestLauncher::programOutlivesALauncherThatDies()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    Launcher launcher(m_display.name());
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

void TestLauncher::secondOnAnInstrumentIsRefused()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    Launcher first(m_display.name());
    first.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
    const QStringList before = instrument.received().filter(QStringLiteral("*IDN?"));

    Launcher second(m_display.name());
    second.start({instrument.resource().toLower()});
    QVERIFY(second.waitForEnd());
    QCOMPARE(second.exitCode(), 1);
    const QString errors = second.errors();
    const QString owner =
        QStringLiteral("正被 scn4070a-launcher（进程 %1，").arg(first.processId());
    QVERIFY2(errors.contains(owner), qPrintable(errors));
    QCOMPARE(instrument.received().filter(QStringLiteral("*IDN?")), before);
    QVERIFY(first.child(QStringLiteral("scn4070a")) != 0);
}

void TestLauncher::instrumentOfALeftProgramIsRefused()
{
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    Launcher first(m_display.name());
    first.start({instrument.resource()});
    QVERIFY(waitForEmbedding());
    const qint64 program = first.child(QStringLiteral("scn4070a"));
    first.kill();
    QVERIFY(isThere(program));

    Launcher second(m_display.name());
    second.start({instrument.resource()});
    QVERIFY(second.waitForEnd());
    QCOMPARE(second.exitCode(), 1);
    const QString errors = second.errors();
    QVERIFY2(errors.contains(QStringLiteral("正被 scn4070a（进程 %1，").arg(program)),
             qPrintable(errors));

    ::kill(static_cast<pid_t>(program), SIGKILL);
    QVERIFY(QTest::qWaitFor([program] { return !isThere(program); }, kEndWaitMs));
    Launcher third(m_display.name());
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
                             << QStringLiteral("找不到程序 /no/such/program。");
    QTest::newRow("simulator") << QStringList{QStringLiteral("--simulator"),
                                              QStringLiteral("/no/such/simulator")}
                               << QStringLiteral("the simulator did not start:");
    QTest::newRow("simulator that says something else")
        << QStringList{QStringLiteral("--simulator"), QStringLiteral("/bin/echo")}
        << QStringLiteral("unexpected line from the simulator: --tcp 0");
}

void TestLauncher::whatCannotStartIsToldAndEndsIt()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, text);
    Launcher launcher(m_display.name());
    launcher.start(arguments);
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 1);
    const QString errors = launcher.errors();
    QVERIFY2(errors.contains(text), qPrintable(errors));
}

SCN_TEST(TestLauncher, QCoreApplication)
#include "test_launcher.moc"
