#include "support/launcherprocess.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"
#include "support/waylandsession.h"

#include <QStandardPaths>
#include <QTest>

#include <memory>

namespace {

constexpr int kWaitMs = 60000;
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};
/// What the launcher has above and below the program's window.
constexpr int kTabs = 27;
constexpr int kBars = 57;

} // namespace

/// The launcher in a Wayland session, whose X display it needs.
class TestWayland : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void launcherAndProgramAreOneWindow_data();
    void launcherAndProgramAreOneWindow();
    void sessionWithoutXIsTold_data();
    void sessionWithoutXIsTold();

private:
    static void addPlatforms();
    QRect programPlace() const;
    QRect programPart() const;

    std::unique_ptr<WaylandSession> m_session;
};

void TestWayland::initTestCase()
{
    for (const char* tool : {"weston", "Xwayland"}) {
        if (QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty()) {
            SCN_SKIP(QLatin1String(tool) + QStringLiteral(" is not installed"));
        }
    }
    m_session = std::make_unique<WaylandSession>();
    QVERIFY2(!m_session->name().isEmpty(), qPrintable(m_session->log()));
}

/// What a session may have set for its programs.
void TestWayland::addPlatforms()
{
    QTest::addColumn<QString>("platform");
    QTest::newRow("nothing") << QString();
    QTest::newRow("X") << QStringLiteral("xcb");
    QTest::newRow("Wayland") << QStringLiteral("wayland");
    QTest::newRow("either") << QStringLiteral("wayland;xcb");
}

void TestWayland::launcherAndProgramAreOneWindow_data()
{
    addPlatforms();
}

void TestWayland::launcherAndProgramAreOneWindow()
{
    QFETCH(QString, platform);
    const SimulatedInstrument instrument(SimulatedInstrument::Transport::Tcp, kSmallest);
    LauncherProcess launcher(m_session->name());
    launcher.setVariable(QStringLiteral("WAYLAND_DISPLAY"), m_session->socket());
    launcher.setVariable(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    launcher.setVariable(QStringLiteral("QT_QPA_PLATFORM"), platform);
    launcher.start({instrument.resource()});
    QVERIFY2(LauncherProcess::waitForEmbeddingOn(*m_session), qPrintable(launcher.errors()));
    QTRY_COMPARE_WITH_TIMEOUT(programPlace(), programPart(), kWaitMs);
    // Through the window manager; and it stays inside.
    const qulonglong window = LauncherProcess::windowOn(*m_session);
    m_session->xdotool({QStringLiteral("windowsize"), QString::number(window),
                        QStringLiteral("1200"), QStringLiteral("700")});
    QTRY_COMPARE_WITH_TIMEOUT(m_session->placeOf(window).size(), QSize(1200, 700), kWaitMs);
    QTRY_COMPARE_WITH_TIMEOUT(programPlace(), programPart(), kWaitMs);
    const int lines = instrument.received().size();
    QTRY_VERIFY_WITH_TIMEOUT(instrument.received().size() > lines + 3, kWaitMs);
    QCOMPARE(programPlace(), programPart());
    QVERIFY(m_session->closeWindow(window));
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 0);
}

QRect TestWayland::programPlace() const
{
    return m_session->placeOf(LauncherProcess::programWindowOn(*m_session));
}

/// Where the launcher shows it.
QRect TestWayland::programPart() const
{
    const QRect launcher = m_session->placeOf(LauncherProcess::windowOn(*m_session));
    return {launcher.x(), launcher.y() + kTabs, launcher.width(), launcher.height() - kBars};
}

void TestWayland::sessionWithoutXIsTold_data()
{
    addPlatforms();
}

void TestWayland::sessionWithoutXIsTold()
{
    QFETCH(QString, platform);
    LauncherProcess launcher{QString()};
    launcher.setVariable(QStringLiteral("WAYLAND_DISPLAY"), m_session->socket());
    launcher.setVariable(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    launcher.setVariable(QStringLiteral("QT_QPA_PLATFORM"), platform);
    launcher.start(kSmallest);
    QVERIFY(launcher.waitForEnd());
    QVERIFY(!launcher.crashed());
    QCOMPARE(launcher.exitCode(), 1);
    const QString errors = launcher.errors();
    QVERIFY2(errors.contains(QStringLiteral("This Wayland session needs Xwayland.")),
             qPrintable(errors));
}

SCN_TEST(TestWayland, QCoreApplication)
#include "test_wayland.moc"
