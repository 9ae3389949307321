#include "launcher/place/fileuse.h"
#include "launcher/place/keptrun.h"
#include "support/launcherscene.h"
#include "support/readings.h"
#include "support/simulatedinstrument.h"
#include "support/testprogram.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QSpinBox>
#include <QTest>

#include <csignal>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 60000;
const QString kSerial = QStringLiteral("MY7");
const QString kPoll = QStringLiteral("STAT:OPER:EVEN?");
const QStringList kInstrument = {QStringLiteral("--slots"), QStringLiteral("1:15"),
                                 QStringLiteral("--rate"),  QStringLiteral("40"),
                                 QStringLiteral("--idn"),   QStringLiteral("SCN,SCN4070A,MY7,1")};

// In the program's window of 1500 x 900.
const QPoint kFirstCheckBox(356, 129);
const QPoint kStartButton(46, 880);

/// A copy of the program in a folder of its own, where its data goes, and an instrument for it.
class Bench
{
public:
    Bench()
        : m_root(QFileInfo(m_folder.path()).canonicalFilePath())
        , m_instrument(SimulatedInstrument::Transport::Tcp, kInstrument)
    {
        QFile::copy(QStringLiteral(SCN_BIN_DIR "/scn4070a"), program());
    }

    QString program() const { return m_root + QStringLiteral("/scn4070a"); }
    QString data() const { return m_root + QLatin1Char('/') + kSerial + QStringLiteral("_Data"); }
    QVector<KeptRun> kept() const { return keptRunsIn(keptRunsFolder(m_root)); }
    QString root() const { return m_root; }
    const SimulatedInstrument& instrument() const { return m_instrument; }

    /// Opens the instrument and waits until the program takes clicks.
    bool open(LauncherScene& scene) const
    {
        const int polls = m_instrument.received().count(kPoll) + 5;
        scene.window().open({m_instrument.resource(), false, 0});
        return scene.waitForEmbedding() &&
               QTest::qWaitFor(
                   [this, polls] { return m_instrument.received().count(kPoll) >= polls; },
                   kWaitMs);
    }

    void click(const LauncherScene& scene, const QPoint& point) const
    {
        const QPoint place = scene.embedded()->mapToGlobal(point);
        DisplayApplication::display().click(place.x(), place.y());
    }

    /// Ticks the first channel, which stays ticked: it is the instrument's.
    bool tickChannel(const LauncherScene& scene) const
    {
        const QString list = QStringLiteral("ROUT:SCAN (@101)");
        const int before = m_instrument.received().count(list);
        click(scene, kFirstCheckBox);
        return QTest::qWaitFor([&] { return m_instrument.received().count(list) > before; },
                               kWaitMs);
    }

    /// Starts, and waits for readings and for the run to be kept.
    bool start(const LauncherScene& scene) const
    {
        const int runs = m_instrument.received().count(QStringLiteral("INIT"));
        const int keptRuns = kept().size();
        click(scene, kStartButton);
        const auto isMeasuring = [&] {
            const QStringList lines = m_instrument.received();
            return lines.count(QStringLiteral("INIT")) > runs &&
                   lines.mid(lines.lastIndexOf(QStringLiteral("INIT")))
                           .filter(QStringLiteral("R? "))
                           .size() >= 3 &&
                   kept().size() > keptRuns;
        };
        return QTest::qWaitFor(isMeasuring, kWaitMs);
    }

    /// Stops, and waits until the last readings are stored.
    bool stop(const LauncherScene& scene) const
    {
        click(scene, kStartButton);
        return QTest::qWaitFor([&scene] { return scene.label("state") == QStringLiteral("空闲"); },
                               kWaitMs);
    }

    /// What the day files hold now, logs included, without opening them where they are.
    Readings stored() const
    {
        const QTemporaryDir copy;
        for (const QString& name : QDir(data()).entryList(QDir::Files)) {
            if (!name.endsWith(QLatin1String("-shm"))) {
                QFile::copy(data() + QLatin1Char('/') + name, copy.filePath(name));
            }
        }
        return readingsInStore(copy.path());
    }

private:
    const QTemporaryDir m_folder;
    const QString m_root;
    const SimulatedInstrument m_instrument;
};

/// The command line's exit code.
int store(const QString& command, const QString& run, QString* output = nullptr)
{
    QProcess process;
    process.start(QStringLiteral(SCN_BIN_DIR "/scn4070a-store"), {command, run});
    process.waitForFinished(kWaitMs);
    if (output) {
        *output = QString::fromUtf8(process.readAllStandardOutput());
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

/// Whether the whole run has a second name no longer, and holds these readings.
void verifyKept(const KeptRun& run, const Readings& readings)
{
    QVERIFY(!readings.isEmpty());
    // The program may still be folding its log in.
    QTRY_COMPARE_WITH_TIMEOUT(store(QStringLiteral("check"), run.folder), 0, kWaitMs);
    QString list;
    QCOMPARE(store(QStringLiteral("list"), run.folder, &list), 0);
    QVERIFY2(list.contains(QStringLiteral(" %1 ").arg(countOf(readings))), qPrintable(list));
    const QString different = difference(readingsInStore(run.folder), readings);
    QVERIFY2(different.isEmpty(), qPrintable(different));
}

/// For the fake child: another test may have an instrument of the same name.
QString goodInstrument()
{
    return QStringLiteral("good=%1").arg(QCoreApplication::applicationPid());
}

/// The visible dialog of the limits; null if there is none.
QDialog* limitsDialog(const LauncherScene& scene)
{
    auto* dialog = scene.currentTab()->findChild<QDialog*>(QStringLiteral("runLimits"));
    return dialog && dialog->isVisible() ? dialog : nullptr;
}

void clickIn(const LauncherScene& scene, const char* name)
{
    QDialog* const dialog = limitsDialog(scene);
    QVERIFY(dialog);
    auto* const widget = dialog->findChild<QWidget*>(QString::fromLatin1(name));
    QVERIFY(widget);
    if (qobject_cast<QCheckBox*>(widget)) {
        const QPoint box = widget->mapToGlobal(QPoint(10, widget->height() / 2));
        DisplayApplication::display().click(box.x(), box.y());
    } else {
        scene.click(widget);
    }
}

} // namespace

/// The runs that the launcher keeps of the real program, and what its user sets.
class TestKeptRuns : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void runOfTheStartBeforeIsKept();
    void logOfAKilledProgramIsKept();
    void closedLauncherLeavesTheRunKept();
    void limitsAreSetByHand();
    void limitsTakeEffect();
    void missingLinksAreTold();
};

void TestKeptRuns::initTestCase()
{
    QVERIFY2(!DisplayApplication::display().name().isEmpty(), "Xvfb did not start");
}

void TestKeptRuns::runOfTheStartBeforeIsKept()
{
    const Bench bench;
    LauncherScene scene(bench.program());
    QVERIFY(bench.open(scene));
    QVERIFY(bench.tickChannel(scene));
    QVERIFY(bench.start(scene));
    QVERIFY(bench.stop(scene));
    const Readings first = bench.stored();
    // Not yet: one file under two names.
    QCOMPARE(bench.kept().size(), 1);
    QCOMPARE(store(QStringLiteral("check"), bench.kept().constFirst().folder), 3);
    QCOMPARE(store(QStringLiteral("check"), bench.data()), 0);

    QVERIFY(bench.start(scene));
    const QVector<KeptRun> kept = bench.kept();
    QCOMPARE(kept.size(), 2);
    QCOMPARE(kept.constFirst().instrument, bench.instrument().resource());
    QCOMPARE(kept.constFirst().serial, kSerial);
    QCOMPARE(kept.constFirst().source, bench.data());
    verifyKept(kept.constFirst(), first);
    QVERIFY(bench.stop(scene));
}

void TestKeptRuns::logOfAKilledProgramIsKept()
{
    const Bench bench;
    LauncherScene scene(bench.program());
    QVERIFY(bench.open(scene));
    QVERIFY(bench.tickChannel(scene));
    QVERIFY(bench.start(scene));
    const QList<qint64> programs = LauncherScene::children(QStringLiteral("scn4070a"));
    QCOMPARE(programs.size(), 1);
    ::kill(static_cast<pid_t>(programs.constFirst()), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(!scene.currentTab()->isBusy(), kWaitMs);
    const Readings left = bench.stored();
    const KeptRun killed = bench.kept().constFirst();
    const QString day = dayFileNames(bench.data()).value(0);
    const QString wal = killed.path(day + QStringLiteral("-wal"));
    QVERIFY(factsOf(wal)->bytes > 0);
    QVERIFY(factsOf(wal)->isSameFile(
        *factsOf(bench.data() + QLatin1Char('/') + day + QStringLiteral("-wal"))));

    // The next start deletes the files without opening them. The instrument still has its scan list.
    QVERIFY(bench.open(scene));
    QVERIFY(bench.start(scene));
    QCOMPARE(bench.kept().size(), 2);
    QVERIFY(factsOf(wal)->bytes > 0);
    verifyKept(killed, left);
    QVERIFY(bench.stop(scene));
}

void TestKeptRuns::closedLauncherLeavesTheRunKept()
{
    const Bench bench;
    {
        LauncherScene scene(bench.program());
        QVERIFY(bench.open(scene));
        QVERIFY(bench.tickChannel(scene));
        QVERIFY(bench.start(scene));
        QVERIFY(DisplayApplication::display().closeWindow(scene.window().winId()));
        const auto question = [&scene] {
            return scene.window().findChild<QMessageBox*>(QStringLiteral("scanQuestion"));
        };
        QTRY_VERIFY_WITH_TIMEOUT(question() && question()->isVisible(), kWaitMs);
        scene.click(question()->buttons().at(0));
        QTRY_VERIFY_WITH_TIMEOUT(!scene.window().isVisible(), kWaitMs);
    }
    const Readings first = bench.stored();
    QCOMPARE(bench.kept().size(), 1);
    LauncherScene scene(bench.program());
    QVERIFY(bench.open(scene));
    QVERIFY(bench.start(scene));
    QCOMPARE(bench.kept().size(), 2);
    verifyKept(bench.kept().constFirst(), first);
    QVERIFY(bench.stop(scene));
}

void TestKeptRuns::limitsAreSetByHand()
{
    LauncherScene scene(QStringLiteral(SCN_FAKE_CHILD));
    const LauncherSettings settings(scene.home() + QStringLiteral("/launcher.ini"));
    const VirtualDisplay& display = DisplayApplication::display();
    QVERIFY(settings.runLimits().areOff());
    scene.clickButton("keptRuns");
    QTRY_VERIFY(limitsDialog(scene));
    display.xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"),
                     QString::number(limitsDialog(scene)->winId())});
    auto* const value = limitsDialog(scene)->findChild<QSpinBox*>(QStringLiteral("runsValue"));
    QVERIFY(!value->isEnabled());
    clickIn(scene, "runs");
    QTRY_VERIFY(value->isEnabled());
    clickIn(scene, "runsValue");
    display.xdotool({QStringLiteral("key"), QStringLiteral("ctrl+a")});
    display.xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("50"),
                     QStringLiteral("25")});
    QTRY_COMPARE(value->value(), 25);
    clickIn(scene, "accept");
    QTRY_VERIFY(!limitsDialog(scene));
    QCOMPARE(settings.runLimits().runs, 25);
    QCOMPARE(settings.runLimits().days, 0);
    QCOMPARE(settings.runLimits().megabytes, 0);

    // It opens with what is set, and a cancelled change is none.
    scene.clickButton("keptRuns");
    QTRY_VERIFY(limitsDialog(scene));
    QCOMPARE(limitsDialog(scene)->findChild<QSpinBox*>(QStringLiteral("runsValue"))->value(), 25);
    QVERIFY(limitsDialog(scene)->findChild<QCheckBox*>(QStringLiteral("runs"))->isChecked());
    clickIn(scene, "days");
    QTRY_VERIFY(limitsDialog(scene)->findChild<QCheckBox*>(QStringLiteral("days"))->isChecked());
    clickIn(scene, "cancel");
    QTRY_VERIFY(!limitsDialog(scene));
    QCOMPARE(settings.runLimits().days, 0);
}

void TestKeptRuns::limitsTakeEffect()
{
    const QTemporaryDir folder;
    const QString child = folder.filePath(QStringLiteral("child"));
    QVERIFY(QFile::copy(QStringLiteral(SCN_FAKE_CHILD), child));
    for (int day = 1; day <= 3; ++day) {
        KeptRun run;
        run.serial = kSerial;
        run.start = QDateTime(QDate(2026, 1, day), QTime(12, 0));
        run.folder = newKeptRunFolder(keptRunsFolder(folder.path()), run.serial, run.start);
        QVERIFY(QDir().mkpath(run.folder));
        QVERIFY(run.write());
    }
    LauncherScene scene(child);
    const auto kept = [&folder] { return keptRunsIn(keptRunsFolder(folder.path())); };
    scene.openByHand(goodInstrument());
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("state"), QStringLiteral("空闲"), kWaitMs);
    QCOMPARE(kept().size(), 3);
    // Also while the instrument is open.
    LauncherSettings(scene.home() + QStringLiteral("/launcher.ini")).setRunLimits({0, 1, 0});
    QTRY_COMPARE_WITH_TIMEOUT(kept().size(), 1, kWaitMs);
    QCOMPARE(kept().constFirst().start.date(), QDate(2026, 1, 3));
}

void TestKeptRuns::missingLinksAreTold()
{
    const QTemporaryDir folder;
    const QString child = folder.filePath(QStringLiteral("child"));
    QVERIFY(QFile::copy(QStringLiteral(SCN_FAKE_CHILD), child));
    const QTemporaryDir elsewhere(QStringLiteral("/dev/shm/runs-XXXXXX"));
    QVERIFY(QFile::link(elsewhere.path(), folder.filePath(QStringLiteral("runs"))));
    QFile here(folder.filePath(QStringLiteral("here")));
    QFile there(elsewhere.filePath(QStringLiteral("there")));
    QVERIFY(here.open(QIODevice::WriteOnly) && there.open(QIODevice::WriteOnly));
    if (factsOf(here.fileName())->device == factsOf(there.fileName())->device) {
        SCN_SKIP(QStringLiteral("there is one file system only"));
    }
    LauncherScene scene(child);
    scene.openByHand(goodInstrument());
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("keeping"),
                              QStringLiteral("此处的文件系统没有硬链接，测量数据不会保留"),
                              kWaitMs);
}

SCN_TEST(TestKeptRuns, DisplayApplication)
#include "test_keptruns.moc"
