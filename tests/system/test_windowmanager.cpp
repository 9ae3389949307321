#include "support/launcherprocess.h"
#include "support/testprogram.h"
#include "support/virtualdisplay.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace {

/// Long enough for a start, or an end, under a sanitizer on a busy machine.
constexpr int kWaitMs = 60000;
const QStringList kSmallest = {QStringLiteral("--slots"), QStringLiteral("1:13")};
const QSize kScreen(1280, 720);
/// What the launcher has above and below the program's window.
constexpr int kTabs = 27;
constexpr int kBars = 57;
/// The race with the window manager was lost in two of three starts.
constexpr int kStarts = 5;

} // namespace

/// The launcher under a window manager that puts a frame around each window, as those of most desktops do.
class TestWindowManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void windowOpensInsideTheScreenWithItsFrame();
    void programIsBelowTheTabs();

private:
    QString rootProperty(const QString& name) const;
    QRect frameOf(qulonglong window) const;
    QRect programPlace() const;
    QRect programPart() const;

    VirtualDisplay m_display{0, kScreen};
    QProcess m_manager;
};

void TestWindowManager::initTestCase()
{
    if (QStandardPaths::findExecutable(QStringLiteral("openbox")).isEmpty()) {
        SCN_SKIP(QStringLiteral("openbox is not installed"));
    }
    QVERIFY2(!m_display.name().isEmpty(), "Xvfb did not start");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), m_display.name());
    m_manager.setProcessEnvironment(environment);
    m_manager.start(QStringLiteral("openbox"), QStringList());
    QTRY_VERIFY_WITH_TIMEOUT(
        rootProperty(QStringLiteral("_NET_SUPPORTING_WM_CHECK")).contains(QStringLiteral("0x")),
        kWaitMs);
}

void TestWindowManager::cleanupTestCase()
{
    m_manager.terminate();
    m_manager.waitForFinished();
}

QString TestWindowManager::rootProperty(const QString& name) const
{
    QProcess process;
    process.start(QStringLiteral("xprop"),
                  {QStringLiteral("-display"), m_display.name(), QStringLiteral("-root"), name});
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// Where the outermost window around it is.
QRect TestWindowManager::frameOf(qulonglong window) const
{
    while (const qulonglong parent = m_display.parentOf(window)) {
        window = parent;
    }
    return m_display.placeOf(window);
}

QRect TestWindowManager::programPlace() const
{
    return m_display.placeOf(LauncherProcess::programWindowOn(m_display));
}

/// Where the launcher shows it.
QRect TestWindowManager::programPart() const
{
    const QRect launcher = m_display.placeOf(LauncherProcess::windowOn(m_display));
    return {launcher.x(), launcher.y() + kTabs, launcher.width(), launcher.height() - kBars};
}

void TestWindowManager::windowOpensInsideTheScreenWithItsFrame()
{
    LauncherProcess launcher(m_display.name());
    launcher.start({});
    QTRY_VERIFY_WITH_TIMEOUT(LauncherProcess::windowOn(m_display) != 0, kWaitMs);
    const qulonglong window = LauncherProcess::windowOn(m_display);
    QTRY_VERIFY_WITH_TIMEOUT(frameOf(window).height() > m_display.placeOf(window).height() + 10,
                             kWaitMs);
    const QRect frame = frameOf(window);
    QVERIFY2(QRect(QPoint(), kScreen).contains(frame), qPrintable(QStringLiteral("%1, %2, %3 x %4")
                                                                      .arg(frame.x())
                                                                      .arg(frame.y())
                                                                      .arg(frame.width())
                                                                      .arg(frame.height())));
}

void TestWindowManager::programIsBelowTheTabs()
{
    for (int start = 0; start < kStarts; ++start) {
        LauncherProcess launcher(m_display.name());
        launcher.start(kSmallest);
        QVERIFY2(LauncherProcess::waitForEmbeddingOn(m_display), qPrintable(launcher.errors()));
        QTRY_COMPARE_WITH_TIMEOUT(programPlace(), programPart(), kWaitMs);
        launcher.terminate();
        QVERIFY(launcher.waitForEnd());
        QCOMPARE(launcher.exitCode(), 0);
    }
}

SCN_TEST(TestWindowManager, QCoreApplication)
#include "test_windowmanager.moc"
