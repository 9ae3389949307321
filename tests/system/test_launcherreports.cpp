#include "support/attentionlistener.h"
#include "support/launcherscene.h"
#include "support/testprogram.h"

#include <QAbstractButton>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <csignal>

using namespace scnlauncher;

namespace {

constexpr int kWaitMs = 60000;
const QString kFakeChild = QStringLiteral(SCN_FAKE_CHILD);
const QString kProgram = QStringLiteral(SCN_BIN_DIR "/scn4070a");

/// Takes the files that would be opened on the desktop.
class UrlTaker : public QObject
{
    Q_OBJECT

public:
    UrlTaker() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "take"); }
    ~UrlTaker() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QList<QUrl> urls() const { return m_urls; }

public slots:
    void take(const QUrl& url) { m_urls.append(url); }

private:
    Q_DISABLE_COPY_MOVE(UrlTaker)

    QList<QUrl> m_urls;
};

} // namespace

/// What the launcher tells of its children, their data and their logs.
class TestLauncherReports : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void deadChildInTheBackgroundIsMarked();
    void windowManagerHearsOfADeath();
    void wordOfAChildInTheBackgroundIsMarked_data();
    void wordOfAChildInTheBackgroundIsMarked();
    void simulatorThatFailsSaysWhy();
    void longTitleKeepsItsEnd();
    void simulatorThatDiesIsTold();
    void logIsAClickAway();
    void eachSimulatorHasItsOwnLog();
    void dataElsewhereIsNamed();
    void withoutADesktopThePathIsTold();
};

void TestLauncherReports::initTestCase()
{
    QVERIFY2(!DisplayApplication::display().name().isEmpty(), "the display did not start");
}

void TestLauncherReports::deadChildInTheBackgroundIsMarked()
{
    LauncherScene scene(kFakeChild);
    UrlTaker taker;
    scene.openByHand(LauncherScene::own("good"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
    const QString identity = scene.label("identity");
    scene.clickButton("newTab");
    auto* const bar = scene.window().findChild<QTabBar*>();
    QTRY_COMPARE(bar->count(), 2);
    QCOMPARE(bar->tabText(0), identity);
    const qint64 child = LauncherScene::children(QStringLiteral("scn_fake_child")).value(0);
    const QString folder =
        QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(child))).path();
    ::kill(static_cast<pid_t>(child), SIGKILL);
    QTRY_COMPARE_WITH_TIMEOUT(bar->tabText(0), QStringLiteral("已终止：") + identity, kWaitMs);
    QVERIFY(!bar->tabIcon(0).isNull());
    QVERIFY(bar->tabIcon(1).isNull());
    scene.clickTab(0);
    QTRY_COMPARE(bar->currentIndex(), 0);
    QCOMPARE(scene.label("subject"), LauncherScene::own("good") + QStringLiteral(" - ") + identity);
    // The log outlives the child.
    scene.clickButton("endedLog");
    QTRY_COMPARE(taker.urls().size(), 1);
    // So does its data.
    QVERIFY2(scene.label("endedFolder").endsWith(folder), qPrintable(scene.label("endedFolder")));
    scene.clickButton("openEndedFolder");
    QTRY_COMPARE(taker.urls().size(), 2);
    QCOMPARE(taker.urls().last(), QUrl::fromLocalFile(folder));
    // Nothing is left of the mark with another choice.
    scene.clickButton("chooseOther");
    QTRY_COMPARE(bar->tabText(0), QStringLiteral("选择仪器"));
    QVERIFY(bar->tabIcon(0).isNull());
}

void TestLauncherReports::windowManagerHearsOfADeath()
{
    LauncherScene scene(kFakeChild);
    scene.openByHand(LauncherScene::own("good"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
    // The user works with another window.
    QWidget other;
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    const XDisplay& display = DisplayApplication::display();
    display.xdotool({QStringLiteral("windowfocus"), QString::number(other.winId())});
    QTRY_COMPARE(QGuiApplication::focusWindow(), other.windowHandle());
    AttentionListener listener(display.name());
    QVERIFY(!listener.hasAsked(scene.window().winId()));
    const qint64 child = LauncherScene::children(QStringLiteral("scn_fake_child")).value(0);
    ::kill(static_cast<pid_t>(child), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(listener.hasAsked(scene.window().winId()), kWaitMs);
}

void TestLauncherReports::wordOfAChildInTheBackgroundIsMarked_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("mark");
    QTest::addColumn<bool>("staysInView");
    QTest::newRow("critical") << QStringLiteral("critical disk is full")
                              << QStringLiteral("严重错误") << false;
    QTest::newRow("lost") << QStringLiteral("warning 仪器连接已丢失")
                          << QStringLiteral("连接已丢失") << true;
}

void TestLauncherReports::wordOfAChildInTheBackgroundIsMarked()
{
    QFETCH(QString, line);
    QFETCH(QString, mark);
    QFETCH(bool, staysInView);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("line"));
    LauncherScene scene(kFakeChild);
    scene.openByHand(QStringLiteral("says=") + path);
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
    const QString identity = scene.label("identity");
    scene.clickButton("newTab");
    auto* const bar = scene.window().findChild<QTabBar*>();
    QTRY_COMPARE(bar->count(), 2);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("2026-11-22 10:00:00.000 %1\n").arg(line).toUtf8());
    file.close();
    const QString marked = mark + QStringLiteral("：") + identity;
    QTRY_COMPARE_WITH_TIMEOUT(bar->tabText(0), marked, kWaitMs);
    scene.clickTab(0);
    QTRY_COMPARE(bar->currentIndex(), 0);
    QTRY_COMPARE(bar->tabText(0), staysInView ? marked : identity);
    QCOMPARE(scene.label("critical"), staysInView ? QString() : QStringLiteral("disk is full"));
}

void TestLauncherReports::simulatorThatFailsSaysWhy()
{
    LauncherScene scene(kProgram, {QStringLiteral("--rate"), QStringLiteral("abc")});
    scene.clickButton("open");
    const auto* words = scene.currentTab()->findChild<QPlainTextEdit*>();
    QTRY_VERIFY_WITH_TIMEOUT(words->isVisible(), kWaitMs);
    QVERIFY2(words->toPlainText().contains(QLatin1String("--rate")),
             qPrintable(words->toPlainText()));
    QCOMPARE(scene.label("subject"), QStringLiteral("模拟仪器"));
}

void TestLauncherReports::longTitleKeepsItsEnd()
{
    LauncherScene scene(kFakeChild);
    const QString resource =
        LauncherScene::own("deaf=a-long-name-of-an-adapter-that-many-ports-have-in-common");
    scene.openByHand(resource);
    const auto* const bar = scene.window().findChild<QTabBar*>();
    QTRY_VERIFY(bar->tabText(0).contains(QStringLiteral("…")));
    constexpr int kTold = 10;
    QVERIFY(bar->tabText(0).startsWith(resource.left(kTold)));
    QVERIFY(bar->tabText(0).endsWith(resource.right(kTold)));
    QVERIFY(bar->tabText(0).size() < resource.size());
}

void TestLauncherReports::simulatorThatDiesIsTold()
{
    LauncherScene scene(kProgram);
    scene.clickButton("open");
    QVERIFY(scene.waitForEmbedding());
    const qint64 simulator = LauncherScene::children(QStringLiteral("scn4070a-sim")).value(0);
    QVERIFY(simulator > 0);
    ::kill(static_cast<pid_t>(simulator), SIGKILL);
    QTRY_VERIFY_WITH_TIMEOUT(scene.label("pageTitle").contains(QStringLiteral("模拟仪器已退出")),
                             kWaitMs);
    QCOMPARE(LauncherScene::children(QStringLiteral("scn4070a")).size(), 0);
    const auto* const bar = scene.window().findChild<QTabBar*>();
    QVERIFY(bar->tabText(0).startsWith(QStringLiteral("已终止：")));
    scene.clickButton("startAgain");
    QVERIFY(scene.waitForEmbedding());
    QTRY_COMPARE_WITH_TIMEOUT(scene.label("state"), QStringLiteral("空闲"), kWaitMs);
}

void TestLauncherReports::logIsAClickAway()
{
    LauncherScene scene(kFakeChild);
    UrlTaker taker;
    scene.openByHand(LauncherScene::own("good"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
    scene.clickButton("log");
    QTRY_COMPARE(taker.urls().size(), 1);
    QFile log(taker.urls().at(0).toLocalFile());
    QVERIFY(log.open(QIODevice::ReadOnly));
    QVERIFY(log.readAll().contains("仪器已连接"));
}

void TestLauncherReports::eachSimulatorHasItsOwnLog()
{
    LauncherScene scene(kProgram);
    UrlTaker taker;
    const auto* const tabs = scene.window().findChild<QTabWidget*>();
    QStringList logs;
    for (int instrument = 0; instrument < 2; ++instrument) {
        scene.clickButton("open");
        QVERIFY(scene.waitForEmbedding());
        scene.clickButton("log");
        QTRY_COMPARE(taker.urls().size(), instrument + 1);
        logs.append(taker.urls().last().toLocalFile());
        scene.clickButton("newTab");
        QTRY_COMPARE(tabs->count(), instrument + 2);
    }
    QVERIFY2(logs.at(0) != logs.at(1), qPrintable(logs.at(0)));
    for (const QString& path : logs) {
        QFile file(path);
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
        // One start, by the first line of a log.
        QCOMPARE(file.readAll().count("---- "), 1);
    }
}

void TestLauncherReports::dataElsewhereIsNamed()
{
    LauncherScene scene(kFakeChild);
    UrlTaker taker;
    const QString beside = QFileInfo(kFakeChild).canonicalPath();
    const auto* const tabs = scene.window().findChild<QTabWidget*>();
    QList<qint64> before;
    QStringList folders;
    // Two, of which one at most runs where the program is.
    for (const char* resource : {"good", "good=second"}) {
        scene.openByHand(LauncherScene::own(resource));
        QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
        for (const qint64 child : LauncherScene::children(QStringLiteral("scn_fake_child"))) {
            if (!before.contains(child)) {
                before.append(child);
                folders.append(
                    QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(child)))
                        .path());
            }
        }
        const QString folder = folders.last();
        QVERIFY2(scene.label("folder").endsWith(folder), qPrintable(scene.label("folder")));
        QCOMPARE(scene.label("place").isEmpty(), folder == beside);
        QVERIFY(folder == beside || scene.label("place").contains(folder));
        scene.clickButton("openFolder");
        QTRY_VERIFY(!taker.urls().isEmpty() && taker.urls().last() == QUrl::fromLocalFile(folder));
        scene.clickButton("newTab");
        QTRY_COMPARE(tabs->count(), folders.size() + 1);
    }
    QCOMPARE(folders.size(), 2);
    QVERIFY(folders.at(0) != folders.at(1));
}

void TestLauncherReports::withoutADesktopThePathIsTold()
{
    LauncherScene scene(kFakeChild);
    // Nobody takes files.
    QObject nobody;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &nobody, "no such slot");
    scene.openByHand(LauncherScene::own("good"));
    QTRY_VERIFY_WITH_TIMEOUT(!scene.label("identity").isEmpty(), kWaitMs);
    scene.clickButton("log");
    const auto message = [&scene] {
        return scene.window().findChild<QMessageBox*>(QStringLiteral("pathMessage"));
    };
    QTRY_VERIFY(message() && message()->isVisible());
    QVERIFY2(message()->text().contains(scene.home() + QStringLiteral("/scn4070a/xgood")),
             qPrintable(message()->text()));
    QVERIFY(message()->text().contains(QStringLiteral("xdg-utils")));
    QCOMPARE(message()->buttons().at(0)->text(), QStringLiteral("确定"));
    scene.click(message()->buttons().at(0));
    QTRY_VERIFY(!message());
    // A log that could not be written is another matter.
    QVERIFY(QDir(scene.home() + QStringLiteral("/scn4070a")).removeRecursively());
    scene.clickButton("log");
    QTRY_VERIFY(message() && message()->isVisible());
    QVERIFY2(message()->text().contains(QStringLiteral("不存在")), qPrintable(message()->text()));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

SCN_TEST(TestLauncherReports, DisplayApplication)
#include "test_launcherreports.moc"
