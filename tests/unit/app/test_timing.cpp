#include "acquisition/readdatatiming.h"
#include "app/linkwatch.h"
#include "app/windowtiming.h"
#include "overlay/locktiming.h"
#include "plot/graphicsettingwidget.h"
#include "support/testprogram.h"

#include <QtTest>

#include <chrono>

using std::chrono::milliseconds;

/// The waits of the program: other tests shorten them.
class TestTiming : public QObject
{
    Q_OBJECT

private slots:
    void waitLasts_data();
    void waitLasts();
};

void TestTiming::waitLasts_data()
{
    QTest::addColumn<qint64>("told");
    QTest::addColumn<qint64>("wanted");
    const auto addRow = [](const char* name, milliseconds told, int wanted) {
        QTest::newRow(name) << qint64(told.count()) << qint64(wanted);
    };
    const scn::ReadDataTiming acquisition;
    addRow("acquisition: start", acquisition.startDelay, 1000);
    addRow("acquisition: between passes", acquisition.passDelay, 1000);
    addRow("acquisition: settling", acquisition.settleDelay, 50);
    addRow("acquisition: before a fetch again", acquisition.fetchRetryDelay, 100);
    addRow("acquisition: in a silence", acquisition.silenceDelay, 3000);
    addRow("workspace: offering a refused series", GraphicSettingWidget::kRegistrationInterval,
           5000);
    const scn::LockTiming lock;
    addRow("lock: hold", lock.hold, 1000);
    addRow("lock: fade", lock.fade, 500);
    const scn::WindowTiming window;
    addRow("window: overlay of the start-up", window.startupView, 2000);
    addRow("window: look at the store", window.storeWatch, 500);
    addRow("window: last pass", window.lastPass, 2000);
    addRow("window: message", window.message, 3000);
    addRow("window: end of a thread", window.threadEnd.stop, 5000);
    addRow("window: leaving an exchange", window.threadEnd.interrupt, 1000);
    addRow("window: end by force", window.threadEnd.termination, 1000);
    addRow("window: hold of the lock", window.lock.hold, 1000);
    addRow("window: fade of the lock", window.lock.fade, 500);
    addRow("window: without replies", scn::LinkWatch::kLongestSilence, 60000);
    addRow("end of the process: helpers", scn::kHelperWait, 500);
    addRow("launcher: look for the end of the input", window.launcher.inputPoll, 100);
    addRow("launcher: look for the end of the output", window.launcher.outputPoll, 100);
    addRow("launcher: last lines", window.launcher.farewell, 500);
    addRow("launcher: line being written", window.launcher.lastLine, 500);
}

void TestTiming::waitLasts()
{
    QFETCH(const qint64, told);
    QFETCH(const qint64, wanted);
    QCOMPARE(told, wanted);
}

SCN_TEST(TestTiming, QCoreApplication)
#include "test_timing.moc"
