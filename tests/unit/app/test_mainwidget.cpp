#include "acquisition/readdata.h"
#include "app/inputreaderthread.h"
#include "app/mainwidget.h"
#include "channels/advancedsetting.h"
#include "channels/commfunc.h"
#include "common/helperthreads.h"
#include "overlay/loadingview.h"
#include "overlay/windowlockmanager.h"
#include "plot/graphicsettingwidget.h"
#include "resources/resources.h"
#include "state/globals.h"
#include "support/testprogram.h"
#include "widgets/customcombobox.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"
#include "widgets/timepicker.h"
#include "windowbench.h"

#include <QComboBox>
#include <QDate>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMetaMethod>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTime>
#include <QtTest>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>

using namespace scn;

using namespace std::chrono_literals;

namespace {

/// What the window sends from its start until it is idle, with a module of two channels in slot 2.
/// "SYST:DATE" and "SYST:TIME" carry the time of the start.
const char* const kStartUp[] = {
    "*CLS",
    "*IDN?",
    "SYST:CTYP? 1",
    "SYST:CTYP? 2",
    "FUNC? (@201)",
    "FUNC? (@202)",
    "SYST:CTYP? 3",
    "SYST:CTYP? 4",
    "SYST:CTYP? 5",
    "SYST:CTYP? 6",
    "SYST:CTYP? 7",
    "SYST:CTYP? 8",
    "SYST:CTYP? 9",
    "SYST:CTYP? 10",
    "SYST:CTYP? 11",
    "SYST:CTYP? 12",
    "SYST:CTYP? 13",
    "SYST:CTYP? 14",
    "SYST:CTYP? 15",
    "STAT:OPER:EVEN?",
    "ROUT:SCAN?",
    "ROUT:CHAN:LAB? (@201)",
    "FUNC? (@201)",
    "VOLT:DC:RANG:AUTO? (@201)",
    "ROUT:CHAN:DEL:AUTO? (@201)",
    "VOLT:DC:NPLC? (@201)",
    "INP:IMP:AUTO? (@201)",
    "VOLT:REF? (@201)",
    "CALC:SCAL:GAIN? (@201)",
    "CALC:SCAL:OFFS? (@201)",
    "CALC:SCAL:STAT? (@201)",
    "CALC:SCAL:UNIT? (@201)",
    "CALC:SCAL:FUNC? (@201)",
    "CALC:SCAL:REF:AUTO? (@201)",
    "CALC:SCAL:REF? (@201)",
    "CALC:SCAL:DBM:REF? (@201)",
    "CALC:SCAL:DB:REF? (@201)",
    "ROUT:CHAN:LAB? (@202)",
    "FUNC? (@202)",
    "VOLT:DC:RANG:AUTO? (@202)",
    "ROUT:CHAN:DEL:AUTO? (@202)",
    "VOLT:DC:NPLC? (@202)",
    "INP:IMP:AUTO? (@202)",
    "VOLT:REF? (@202)",
    "CALC:SCAL:GAIN? (@202)",
    "CALC:SCAL:OFFS? (@202)",
    "CALC:SCAL:STAT? (@202)",
    "CALC:SCAL:UNIT? (@202)",
    "CALC:SCAL:FUNC? (@202)",
    "CALC:SCAL:REF:AUTO? (@202)",
    "CALC:SCAL:REF? (@202)",
    "CALC:SCAL:DBM:REF? (@202)",
    "CALC:SCAL:DB:REF? (@202)",
    "TRIG:SOUR?",
    "TRIG:COUN?",
    "MMEM:LOG:ENAB?",
    "MMEM:FORM:READ:RLIM?",
    "MMEM:FORM:READ:RLIM:COUN?",
    "ROUT:MON:STAT?",
    "STAT:OPER:COND?",
    "SYST:DATE",
    "SYST:TIME",
    "SYST:PERS:MOD:DEF?",
    "SYST:PERS:MOD?",
    "MEM:STAT:NAME? 1",
    "MEM:STAT:VAL? 1",
    "MEM:STAT:NAME? 2",
    "MEM:STAT:VAL? 2",
    "MEM:STAT:NAME? 3",
    "MEM:STAT:VAL? 3",
    "MEM:STAT:NAME? 4",
    "MEM:STAT:VAL? 4",
    "MEM:STAT:NAME? 5",
    "MEM:STAT:VAL? 5",
};

QStringList startUpLines()
{
    QStringList lines;
    for (const char* line : kStartUp) {
        lines.append(QString::fromLatin1(line));
    }
    return lines;
}

/// The lines with the time taken off the two that carry it.
QStringList withoutTime(const QStringList& lines)
{
    QStringList plain;
    for (const QString& line : lines) {
        const bool hasTime = line.startsWith(QLatin1String("SYST:DATE ")) ||
                             line.startsWith(QLatin1String("SYST:TIME "));
        plain.append(hasTime ? line.section(QLatin1Char(' '), 0, 0) : line);
    }
    return plain;
}

/// The bench that all tests but those without an instrument begin with.
struct TwoChannels : WindowBench
{
    TwoChannels() { instrument().putModule(2, QStringLiteral("SCN4005A")); }
};

} // namespace

/// The window's composition: what it holds, in which order it comes up, how it ends.
class TestMainWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }

    void startUpSendsTheseLines();
    void clockIsSetToTheComputers();
    void windowIsFramelessAndHidden();
    void upperAreaHoldsTwoTabWidgets();
    void buttonBarHoldsStartAndExport();
    void runningLabelIsNotInTheBar();
    void partsHaveTheirOwners();
    void slotsAreTheseAndPrivateButTwo_data();
    void slotsAreTheseAndPrivateButTwo();
    void lockCoversTheThreePages_data();
    void lockCoversTheThreePages();
    void pagesAreRegisteredForTheLockInTheirOrder();
    void everyExchangeHasFiveSeconds_data();
    void everyExchangeHasFiveSeconds();
    void startupViewCoversTheReadBack();
    void startupViewGoesAWhileAfterASlowReadBack();
    void threadsStartWithTheSearchAndAfterTheReadBack();
    void lineFromTheLauncherReachesTheWindow();
    void withoutInstrumentThereIsOnlyTheOverlay_data();
    void withoutInstrumentThereIsOnlyTheOverlay();
    void recoveryWithoutPagesCanFailAgainAndAgain();
    void lateInstrumentBringsThePagesUp();
    void endOfTheWindowSendsNothingAndEndsItsThreads();
    void endOfTheWindowDropsWhatIsBeingTyped_data();
    void endOfTheWindowDropsWhatIsBeingTyped();
    void endOfTheWindowSilencesAReconnect();
    void acquisitionThatHangsIsEndedByForce();
    void acquisitionThatForceDoesNotEndIsLeftBehind();
};

void TestMainWidget::startUpSendsTheseLines()
{
    TwoChannels bench;
    bench.open();
    QCOMPARE(withoutTime(bench.startUpLines()), startUpLines());
    QCOMPARE(g_instrumentId, QStringLiteral("MAKER SCN4070A SN0001 1.00"));
    QVERIFY(g_instrumentConnected);
}

void TestMainWidget::clockIsSetToTheComputers()
{
    TwoChannels bench;
    const QDateTime before = QDateTime::currentDateTime();
    bench.open();
    const QStringList dates = bench.startUpLines().filter(QStringLiteral("SYST:DATE "));
    const QStringList times = bench.startUpLines().filter(QStringLiteral("SYST:TIME "));
    QCOMPARE(dates.size(), 1);
    QCOMPARE(times.size(), 1);
    const QDate date = QDate::fromString(dates.first(), QStringLiteral("'SYST:DATE 'yyyy,MM,dd"));
    const QTime time = QTime::fromString(times.first(), QStringLiteral("'SYST:TIME 'hh,mm,ss.zzz"));
    QVERIFY2(date.isValid(), qPrintable(dates.first()));
    QVERIFY2(time.isValid(), qPrintable(times.first()));
    const QDateTime set(date, time);
    QVERIFY(before <= set && set <= QDateTime::currentDateTime());
}

void TestMainWidget::windowIsFramelessAndHidden()
{
    TwoChannels bench;
    const MainWidget& window = bench.open();
    QCOMPARE(window.objectName(), QStringLiteral("MainWidget"));
    QCOMPARE(window.windowTitle(), QStringLiteral("SCN4070A 控制软件"));
    QCOMPARE(window.styleSheet(), QStringLiteral("font-family:'Microsoft YaHei',Arial;"));
    QCOMPARE(window.size(), QSize(600, 400));
    QVERIFY(window.testAttribute(Qt::WA_DeleteOnClose));
    QCOMPARE(window.windowFlags(), Qt::Window | Qt::FramelessWindowHint);
    QVERIFY(window.isHidden());
}

void TestMainWidget::upperAreaHoldsTwoTabWidgets()
{
    TwoChannels bench;
    const MainWidget& window = bench.open();
    const CommFunc catalogue;
    auto* settings = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    auto* work = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget1"));
    QVERIFY(settings && work);

    QCOMPARE(settings->minimumWidth(), 320);
    QCOMPARE(settings->maximumWidth(), 320);
    QCOMPARE(settings->styleSheet(), catalogue.tabStyle());
    QCOMPARE(settings->count(), 2);
    QCOMPARE(settings->tabText(0), QStringLiteral("仪器设置"));
    QCOMPARE(settings->tabText(1), QStringLiteral("数据记录设置"));
    QCOMPARE(settings->currentIndex(), 1);
    QVERIFY(qobject_cast<QScrollArea*>(settings->widget(0)));
    QVERIFY(qobject_cast<QScrollArea*>(settings->widget(1)));

    QCOMPARE(work->styleSheet(), catalogue.workspaceTabStyle());
    QCOMPARE(work->count(), 2);
    QCOMPARE(work->tabText(0), QStringLiteral("配置通道"));
    QCOMPARE(work->tabText(1), QStringLiteral("图形设置"));
    const QIcon channels(QStringLiteral(":/image/confChannel.png"));
    const QIcon graphics(QStringLiteral(":/image/graphicsetting.png"));
    const QSize size(32, 32);
    QVERIFY(!channels.pixmap(size).isNull());
    QCOMPARE(work->tabIcon(0).pixmap(size).toImage(), channels.pixmap(size).toImage());
    QCOMPARE(work->tabIcon(1).pixmap(size).toImage(), graphics.pixmap(size).toImage());
    QCOMPARE(work->widget(0), bench.tree());
    QVERIFY(qobject_cast<GraphicSettingWidget*>(work->widget(1)));

    const auto* mainLayout = qobject_cast<QVBoxLayout*>(window.layout());
    QVERIFY(mainLayout);
    QCOMPARE(mainLayout->contentsMargins(), QMargins());
    QCOMPARE(mainLayout->spacing(), 0);
    QCOMPARE(mainLayout->count(), 2);
    const QWidget* content = mainLayout->itemAt(0)->widget();
    QCOMPARE(content->styleSheet(), QStringLiteral("background:rgb(23,23,23);"));
    const auto* contentLayout = qobject_cast<QHBoxLayout*>(content->layout());
    QVERIFY(contentLayout);
    QCOMPARE(contentLayout->contentsMargins(), QMargins());
    QCOMPARE(contentLayout->spacing(), 0);
    QCOMPARE(contentLayout->count(), 2);
    QCOMPARE(contentLayout->itemAt(0)->widget(), settings);
    QCOMPARE(contentLayout->itemAt(1)->widget(), work);
}

void TestMainWidget::buttonBarHoldsStartAndExport()
{
    TwoChannels bench;
    const MainWidget& window = bench.open();
    QWidget* bar = window.layout()->itemAt(1)->widget();
    QCOMPARE(bar->styleSheet(), QStringLiteral("background:rgb(43,43,43);"));
    QCOMPARE(bar->minimumHeight(), 40);
    QCOMPARE(bar->maximumHeight(), 40);
    const auto* layout = qobject_cast<QHBoxLayout*>(bar->layout());
    QVERIFY(layout);
    QCOMPARE(layout->count(), 3);
    QVERIFY(layout->itemAt(1)->spacerItem());
    QVERIFY(layout->itemAt(1)->expandingDirections() & Qt::Horizontal);

    const auto* start = qobject_cast<ImageButton*>(layout->itemAt(0)->widget());
    const auto* exporting = qobject_cast<ImageButton*>(layout->itemAt(2)->widget());
    QVERIFY(start && exporting);
    const QSize size(32, 32);
    const auto picture = [&size](const char* path) {
        return QIcon(QString::fromLatin1(path)).pixmap(size).toImage();
    };
    QCOMPARE(start->toolTip(), QStringLiteral("开始或停止扫描；开始时删除本仪器上次扫描的数据"));
    QCOMPARE(exporting->toolTip(), QStringLiteral("将扫描数据导出为 CSV 文件"));
    QCOMPARE(start->text(), QStringLiteral("开始"));
    QCOMPARE(start->objectName(), QStringLiteral("imageButton"));
    QCOMPARE(start->leftIcon().pixmap(size).toImage(), picture(":/image/start.png"));
    QCOMPARE(start->iconSize(), QSize(60, 40));
    QCOMPARE(start->minimumSize(), QSize(100, 40));
    QCOMPARE(start->maximumSize(), QSize(100, 40));
    QCOMPARE(exporting->text(), QStringLiteral("导出"));
    QCOMPARE(exporting->objectName(), QStringLiteral("imageButton"));
    QCOMPARE(exporting->leftIcon().pixmap(size).toImage(), picture(":/image/derive.png"));
    QCOMPARE(exporting->iconSize(), QSize(50, 40));
    QCOMPARE(exporting->minimumSize(), QSize(90, 40));
    QCOMPARE(exporting->maximumSize(), QSize(90, 40));
    QVERIFY(start->isEnabled() && exporting->isEnabled());
}

void TestMainWidget::runningLabelIsNotInTheBar()
{
    TwoChannels bench;
    const MainWidget& window = bench.open();
    QLabel* label = bench.runningLabel();
    QVERIFY(label);
    QCOMPARE(label->minimumHeight(), 40);
    QVERIFY(label->isHidden());
    QCOMPARE(window.layout()->itemAt(1)->widget()->layout()->indexOf(label), -1);
}

void TestMainWidget::partsHaveTheirOwners()
{
    TwoChannels bench;
    MainWidget& window = bench.open();
    const auto* owner = static_cast<const QObject*>(&window);
    QCOMPARE(bench.startupView()->parent(), owner);
    QCOMPARE(bench.messageDialog()->parent(), owner);
    QCOMPARE(CustomMessageDialog::instance(nullptr), bench.messageDialog());
    QCOMPARE(window.findChild<WindowLockManager*>()->parent(), owner);
    QCOMPARE(window.findChild<InputReaderThread*>()->parent(), owner);
    QVERIFY(!ReadData::instance()->parent());
    QVERIFY(!bench.reconnectView());
    // The two pickers of the logging page are laid out in it.
    for (const TimePicker* picker : window.findChildren<TimePicker*>()) {
        QVERIFY(qobject_cast<QGroupBox*>(picker->parentWidget()));
    }
}

void TestMainWidget::slotsAreTheseAndPrivateButTwo_data()
{
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<bool>("isPublic");
    for (const char* signature : {"stopLoadingView()", "scanFunc()"}) {
        QTest::newRow(signature) << QByteArray(signature) << true;
    }
    for (const char* signature : {"recvUsbSlot(bool)",
                                  "recvStartSlot(bool)",
                                  "recvAlarmComboSlot(int)",
                                  "recvIntervalSlot(bool)",
                                  "recvIntervalPickerSlot(double)",
                                  "recvStopSlot(bool)",
                                  "recvStopCountSlot(int)",
                                  "recvDataClearFinished()",
                                  "handleInput(QString)",
                                  "replyToParent(QString)",
                                  "onItemChanged(QTreeWidgetItem*,int)",
                                  "onModuleItemChanged(QTreeWidgetItem*,int)",
                                  "onChannelItemChanged(QTreeWidgetItem*,int)",
                                  "onTitleEdited(QString)",
                                  "onMeasTypeChanged(int)",
                                  "onRangeTypeChanged(int)",
                                  "onResTypeChanged(int)",
                                  "onMoreButton1Clicked()",
                                  "onZoomStateChanged(bool)",
                                  "onFuncTypeChanged(int)",
                                  "onModificationEdited(QString)",
                                  "onLowerEdited(QString)",
                                  "onUnitChanged(int)",
                                  "onMoreButton2Clicked()",
                                  "recvStartButtonSlot()",
                                  "recvStopScan()",
                                  "recvUseInstSlot()",
                                  "recvLoadBtnSlot()",
                                  "recvElapsedTimeSlot()",
                                  "recvExportButtonSlot()",
                                  "recvBrowseButtonSlot()",
                                  "recvExportFileButtonSlot()",
                                  "recvLockScreenSlot()",
                                  "recvAdvancedSettingChanged(int)"}) {
        QTest::newRow(signature) << QByteArray(signature) << false;
    }
}

void TestMainWidget::slotsAreTheseAndPrivateButTwo()
{
    QFETCH(QByteArray, signature);
    QFETCH(bool, isPublic);
    const QMetaObject& type = MainWidget::staticMetaObject;
    const int index = type.indexOfSlot(signature.constData());
    QVERIFY(index >= type.methodOffset());
    QCOMPARE(type.method(index).access(), isPublic ? QMetaMethod::Public : QMetaMethod::Private);
}

void TestMainWidget::lockCoversTheThreePages_data()
{
    QTest::addColumn<QString>("page");
    QTest::newRow("logging page") << QStringLiteral("logging");
    QTest::newRow("channel table") << QStringLiteral("table");
    QTest::newRow("instrument page") << QStringLiteral("instrument");
}

void TestMainWidget::lockCoversTheThreePages()
{
    QFETCH(QString, page);
    TwoChannels bench;
    MainWidget& window = bench.open();
    auto* settings = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    const auto contentOf = [settings](int tab) {
        return qobject_cast<QScrollArea*>(settings->widget(tab))->widget();
    };
    QWidget* target = bench.tree();
    if (page == QLatin1String("logging")) {
        target = contentOf(1);
    } else if (page == QLatin1String("instrument")) {
        target = contentOf(0);
    }

    const auto covered = [target] {
        for (const QObject* child : target->children()) {
            if (child->inherits("LockableDataCollectionView")) {
                return !static_cast<const QWidget*>(child)->isHidden();
            }
        }
        return false;
    };
    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(target, &enter);
    QVERIFY(!covered());
    window.findChild<WindowLockManager*>()->setLockEnabled(true);
    QVERIFY(covered());
}

/// A page that is registered begins to track the pointer.
void TestMainWidget::pagesAreRegisteredForTheLockInTheirOrder()
{
    struct Recorder : QObject
    {
        QList<QObject*> tracking;
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (event->type() == QEvent::MouseTrackingChange) {
                tracking.append(watched);
            }
            return false;
        }
    } recorder;
    TwoChannels bench;
    qApp->installEventFilter(&recorder);
    MainWidget& window = bench.open();
    qApp->removeEventFilter(&recorder);
    auto* settings = window.findChild<QTabWidget*>(QStringLiteral("myTabWidget"));
    const auto contentOf = [settings](int tab) -> QObject* {
        return qobject_cast<QScrollArea*>(settings->widget(tab))->widget();
    };
    const QList<QObject*> pages = {contentOf(1), bench.tree(), contentOf(0)};
    QList<QObject*> registered;
    for (QObject* widget : qAsConst(recorder.tracking)) {
        if (pages.contains(widget)) {
            registered.append(widget);
        }
    }
    QCOMPARE(registered, pages);
}

void TestMainWidget::everyExchangeHasFiveSeconds_data()
{
    QTest::addColumn<QString>("part");
    for (const char* part : {"read-back", "row", "table", "logging page", "run control"}) {
        QTest::newRow(part) << QString::fromLatin1(part);
    }
}

void TestMainWidget::everyExchangeHasFiveSeconds()
{
    QFETCH(QString, part);
    TwoChannels bench;
    bench.open();
    const auto timeouts = [&bench] {
        return bench.instrument().visa().calls().filter(QStringLiteral("0x3FFF001A"));
    };
    // The first one is the session's own.
    for (const QString& call : timeouts().mid(1)) {
        QVERIFY2(call.endsWith(QLatin1String(", 5000)")), qPrintable(call));
    }
    bench.instrument().visa().clearCalls();
    if (part == QLatin1String("read-back")) {
        bench.readBack(201);
    } else if (part == QLatin1String("row")) {
        QTest::keyClick(bench.box(201, UnitColumn), Qt::Key_Down);
    } else if (part == QLatin1String("table")) {
        bench.tick(201);
    } else if (part == QLatin1String("logging page")) {
        QTest::mouseClick(bench.button(QStringLiteral("外部触发时")), Qt::LeftButton);
    } else {
        bench.window().scanFunc();
    }
    g_scanRunning = false;
    QVERIFY(!timeouts().isEmpty());
    for (const QString& call : timeouts()) {
        QVERIFY2(call.endsWith(QLatin1String(", 5000)")), qPrintable(call));
    }
}

void TestMainWidget::startupViewCoversTheReadBack()
{
    TwoChannels bench;
    bool hidden = true;
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&hidden] {
        for (const QWidget* top : QApplication::topLevelWidgets()) {
            if (const auto* view = top->findChild<LoadingView*>()) {
                hidden = view->isHidden();
            }
        }
    });
    bench.open();
    QVERIFY(!hidden);
    QVERIFY(!bench.startupView()->isHidden());
}

void TestMainWidget::startupViewGoesAWhileAfterASlowReadBack()
{
    TwoChannels bench;
    bench.windowTiming.startupView = 60ms;
    // Each of more than 60 replies takes a millisecond.
    bench.instrument().visa().setReadDuration(1);
    // The last question of the read-back.
    QElapsedTimer clock;
    bench.instrument().whenAsked(QStringLiteral("MEM:STAT:VAL? 5"), [&clock] { clock.start(); });
    const MainWidget& window = bench.open();
    bench.window().show();
    QVERIFY(bench.startupView()->isVisible());
    // The pages were made after it.
    QVERIFY(bench.startupView()->isAncestorOf(window.childAt(window.rect().center())));
    QTRY_VERIFY_WITH_TIMEOUT(!bench.startupView()->isVisible(), 10000);
    QVERIFY2(clock.elapsed() >= 60, qPrintable(QString::number(clock.elapsed())));
}

void TestMainWidget::threadsStartWithTheSearchAndAfterTheReadBack()
{
    TwoChannels bench;
    bool wasRunning = false;
    bool readEarly = false;
    bool readDuringTheSearch = false;
    const auto isReading = [] {
        const auto tops = QApplication::topLevelWidgets();
        return std::any_of(tops.cbegin(), tops.cend(), [](const QWidget* top) {
            return top->findChild<InputReaderThread*>() != nullptr;
        });
    };
    bench.instrument().whenAsked(QStringLiteral("*IDN?"), [&] { readEarly = isReading(); });
    bench.instrument().whenAsked(QStringLiteral("SYST:CTYP? 1"),
                                 [&] { readDuringTheSearch = isReading(); });
    bench.instrument().whenAsked(QStringLiteral("MEM:STAT:VAL? 5"),
                                 [&] { wasRunning = ReadData::instance()->isRunning(); });
    const MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    QVERIFY(!wasRunning);
    QVERIFY(!readEarly && readDuringTheSearch);
    QVERIFY(ReadData::instance()->isRunning());
    QVERIFY(window.findChild<InputReaderThread*>()->isRunning());
    WindowBench::endAcquisition();
}

void TestMainWidget::lineFromTheLauncherReachesTheWindow()
{
    TwoChannels bench;
    auto* reader = bench.open().findChild<InputReaderThread*>();
    QTimer::singleShot(0, reader,
                       [reader] { emit reader->newInputReceived(QStringLiteral("exit")); });
    QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(1); });
    QCOMPARE(QCoreApplication::exec(), 0);
}

void TestMainWidget::withoutInstrumentThereIsOnlyTheOverlay_data()
{
    QTest::addColumn<bool>("opens");
    QTest::newRow("nothing there") << false;
    QTest::newRow("no identity") << true;
}

void TestMainWidget::withoutInstrumentThereIsOnlyTheOverlay()
{
    QFETCH(bool, opens);
    TwoChannels bench;
    if (opens) {
        bench.instrument().setSilent(true);
    } else {
        bench.instrument().visa().fail(FakeVisa::Operation::Open, visa::VI_ERROR_RSRC_NFOUND);
    }
    MainWidget& window = bench.open();
    QVERIFY(!g_instrumentConnected);
    QCOMPARE(bench.startUpLines(),
             opens ? QStringList({QStringLiteral("*CLS"), QStringLiteral("*IDN?")})
                   : QStringList());
    QCOMPARE(window.styleSheet(), QStringLiteral("font-family:'Microsoft YaHei',Arial;"));
    QVERIFY(window.windowTitle().isEmpty());
    QVERIFY(!window.layout());
    QVERIFY(!window.findChild<InputReaderThread*>());
    QVERIFY(!ReadData::instance()->isRunning());

    window.show();
    const auto children = window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget* child : children) {
        QCOMPARE(child->isVisible(), child == bench.reconnectView());
    }
    QVERIFY(bench.reconnectView()->isVisible());
    QCOMPARE(bench.reconnectView()->geometry(), window.rect());
}

void TestMainWidget::recoveryWithoutPagesCanFailAgainAndAgain()
{
    TwoChannels bench;
    bench.instrument().visa().fail(FakeVisa::Operation::Open, visa::VI_ERROR_RSRC_NFOUND);
    bench.open().show();
    const auto* recovery = bench.reconnectView()->findChild<QPushButton*>();
    for (int round = 0; round < 3; ++round) {
        QVERIFY(recovery->isVisible());
        bench.clickRecovery();
        QVERIFY(!recovery->isVisible());
        QTRY_VERIFY(recovery->isVisible());
    }
    QCOMPARE(bench.instrument().visa().calls().filter(QStringLiteral("viOpen(")).size(), 4);
    // The acquisition's report of a lost instrument touches no page either.
    bench.call("recvUseInstSlot");
    QVERIFY(bench.reconnectView()->isVisible());
    QVERIFY(!bench.window().findChild<QTabWidget*>());
}

void TestMainWidget::lateInstrumentBringsThePagesUp()
{
    TwoChannels bench;
    bench.instrument().visa().fail(FakeVisa::Operation::Open, visa::VI_ERROR_RSRC_NFOUND, 0, 1);
    MainWidget& window = bench.open();
    window.show();
    const QSignalSpy lastWindow(qApp, &QGuiApplication::lastWindowClosed);
    bench.clickRecovery();
    QTRY_VERIFY(window.findChild<QTabWidget*>() && window.isVisible());
    QCOMPARE(withoutTime(bench.instrument().takeLines()), startUpLines());
    QVERIFY(lastWindow.isEmpty());
    QVERIFY(!bench.reconnectView()->isVisible());
    QVERIFY(bench.startupView()->isVisible());
    QCOMPARE(window.windowTitle(), QStringLiteral("SCN4070A 控制软件"));
    QVERIFY(ReadData::instance()->isRunning());
    QVERIFY(window.findChild<InputReaderThread*>()->isRunning());

    // From here on it is the window as with an instrument at start: its loss can be recovered.
    WindowBench::endAcquisition();
    bench.call("recvUseInstSlot");
    QVERIFY(bench.reconnectView()->isVisible());
    QVERIFY(!bench.startupView()->isVisible());
    bench.clickRecovery();
    QTRY_VERIFY(!bench.reconnectView()->isVisible());
    QCOMPARE(withoutTime(bench.instrument().takeLines()), startUpLines());
    WindowBench::endAcquisition();
}

void TestMainWidget::endOfTheWindowSendsNothingAndEndsItsThreads()
{
    TwoChannels bench;
    MainWidget& window = bench.open(WindowBench::AcquisitionRuns);
    g_scanRunning = true;
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+16"));
    const QPointer<ReadData> readData = ReadData::instance();
    const QPointer<InputReaderThread> reader = window.findChild<InputReaderThread*>();
    // From its second second on the acquisition thread can be told to stop.
    std::atomic<bool> polled{false};
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&polled] { polled = true; });
    QTRY_VERIFY_WITH_TIMEOUT(polled, 10000);

    QElapsedTimer clock;
    clock.start();
    bench.close();
    QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!readData);
    QVERIFY(!reader);
    QCOMPARE(bench.instrument().takeLines(), QStringList());
    QVERIFY(g_scanRunning);
}

void TestMainWidget::endOfTheWindowDropsWhatIsBeingTyped_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("gain") << static_cast<int>(GainColumn);
    QTest::newRow("offset") << static_cast<int>(OffsetColumn);
    QTest::newRow("panel") << static_cast<int>(MoreColumn);
}

void TestMainWidget::endOfTheWindowDropsWhatIsBeingTyped()
{
    QFETCH(int, column);
    TwoChannels bench;
    bench.windowTiming.startupView = 10ms;
    MainWidget& window = bench.open();
    window.resize(1500, 900);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY_WITH_TIMEOUT(!bench.startupView()->isVisible(), 10000);
    QWidget* field = bench.tree()->itemWidget(bench.item(202), column);
    if (column == MoreColumn) {
        AdvancedSetting* const panel = bench.openPanel(202, MoreColumn);
        QVERIFY(panel);
        const auto spins = panel->findChildren<QDoubleSpinBox*>();
        const auto delay = std::find_if(spins.cbegin(), spins.cend(),
                                        [](const QWidget* spin) { return spin->isVisible(); });
        QVERIFY(delay != spins.cend());
        // Automatic delay has no value to type.
        bench.instrument().setReply(QStringLiteral("ROUT:CHAN:DEL:AUTO?"), QStringLiteral("0"));
        QTest::keyClick((*delay)->parentWidget()->findChild<QComboBox*>(), Qt::Key_Down);
        QVERIFY((*delay)->isEnabled());
        field = *delay;
        QTest::mouseClick(field, Qt::LeftButton);
    } else {
        QTest::mouseClick(field, Qt::LeftButton);
    }
    QTRY_VERIFY(field->hasFocus());
    QTest::keyClicks(field, QStringLiteral("25"));
    bench.instrument().takeLines();
    bench.close();
    QCOMPARE(bench.instrument().takeLines(), QStringList());
}

void TestMainWidget::endOfTheWindowSilencesAReconnect()
{
    TwoChannels bench;
    bench.open().show();
    bench.call("recvUseInstSlot");
    // The instrument still scans, and the window goes while its condition is being asked for.
    bench.instrument().setReply(QStringLiteral("STAT:OPER:COND?"), QStringLiteral("+16"));
    QSemaphore asked;
    QSemaphore closed;
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:COND?"), [&asked, &closed] {
        asked.release();
        closed.acquire();
    });
    bench.clickRecovery();
    QTRY_COMPARE(asked.available(), 1);
    bench.close();
    closed.release();
    QVERIFY(helperthreads::waitForAll(std::chrono::seconds(10)));
    QCOMPARE(bench.instrument().lines().last(), QStringLiteral("STAT:OPER:COND?"));
}

void TestMainWidget::acquisitionThatHangsIsEndedByForce()
{
    TwoChannels bench;
    bench.windowTiming.threadEnd.stop = 120ms;
    bench.windowTiming.threadEnd.interrupt = 60ms;
    bench.open(WindowBench::AcquisitionRuns);
    std::atomic<bool> hangs{false};
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&hangs] {
        hangs = true;
        for (;;) {
            ::pause();
        }
    });
    QTRY_VERIFY_WITH_TIMEOUT(hangs, 10000);
    const QPointer<ReadData> readData = ReadData::instance();
    QTest::ignoreMessage(QtWarningMsg, "线程未能结束，强制终止");
    QElapsedTimer clock;
    clock.start();
    bench.close();
    QVERIFY(!readData);
    QVERIFY2(clock.elapsed() >= 180, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(clock.elapsed() < 12000, qPrintable(QString::number(clock.elapsed())));
}

/// The entry sees a helper that still runs, and ends the process without taking apart what it uses.
void TestMainWidget::acquisitionThatForceDoesNotEndIsLeftBehind()
{
    TwoChannels bench;
    bench.windowTiming.threadEnd.stop = 20ms;
    bench.windowTiming.threadEnd.interrupt = 20ms;
    bench.windowTiming.threadEnd.termination = 20ms;
    bench.open(WindowBench::AcquisitionRuns);
    std::atomic<bool> hangs{false};
    QSemaphore isFree;
    bench.instrument().whenAsked(QStringLiteral("STAT:OPER:EVEN?"), [&hangs, &isFree] {
        hangs = true;
        // Never looks whether it is to end.
        isFree.acquire();
    });
    QTRY_VERIFY_WITH_TIMEOUT(hangs, 10000);
    const QPointer<ReadData> acquisition = ReadData::instance();
    bench.close();
    QVERIFY(acquisition && acquisition->isRunning());
    QVERIFY(!helperthreads::waitForAll(50ms));
    isFree.release();
    QVERIFY(helperthreads::waitForAll(std::chrono::seconds(10)));
    QVERIFY(acquisition->wait(10000));
    delete acquisition;
}

SCN_TEST(TestMainWidget, QApplication)
#include "test_mainwidget.moc"
