#include "app/mainwidget.h"

#include "acquisition/readdata.h"
#include "app/buttonbarbuilder.h"
#include "app/channeleditor.h"
#include "app/channeltable.h"
#include "app/channeltablebuilder.h"
#include "app/fourwirepartners.h"
#include "app/inputreaderthread.h"
#include "app/instrumentlink.h"
#include "app/instrumentpagebuilder.h"
#include "app/launcheroutput.h"
#include "app/loggingpagebuilder.h"
#include "app/runindicator.h"
#include "app/runstate.h"
#include "app/scanmarks.h"
#include "app/threadend.h"
#include "app/windowdisplay.h"
#include "channels/commfunc.h"
#include "common/guigate.h"
#include "common/threadassert.h"
#include "export/csvexportfromdbthread.h"
#include "overlay/loadingview.h"
#include "overlay/windowlockmanager.h"
#include "plot/graphicsettingwidget.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"
#include "widgets/timepicker.h"

#include <QApplication>
#include <QCheckBox>
#include <QColor>
#include <QCoreApplication>
#include <QDebug>
#include <QHBoxLayout>
#include <QPointer>
#include <QRadioButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace scn;

namespace {

const QLatin1String kExitCommand("exit");
constexpr int kSettingsTabsWidth = 320;

void removeMargins(QLayout* layout)
{
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
}

} // namespace

MainWidget::MainWidget(QWidget* parent, const WindowTiming& timing)
    : QWidget(parent)
    , m_timing(timing)
    , m_gate(std::make_shared<GuiGate>())
    , m_launcherOutput(std::make_unique<LauncherOutput>(timing.launcher))
    , m_table(std::make_unique<ChannelTable>(static_cast<ChannelForm&>(*this)))
    , m_marks(std::make_unique<ScanMarks>(*m_table, [this] { tellWorkspace(); }))
    , m_partners(std::make_unique<FourWirePartners>(*m_table, *m_marks))
    , m_display(std::make_unique<WindowDisplay>(*m_table, *m_marks, *m_partners,
                                                static_cast<LoggingForm&>(*this),
                                                [this] { listenToLauncher(); }))
    , m_link(std::make_unique<InstrumentLink>(m_gate, *m_display, [this] { showReconnectView(); }))
    , m_editor(std::make_unique<ChannelEditor>(*m_table, *m_marks, *m_partners, *m_link))
    , m_runState(std::make_unique<RunStateMachine>(g_scanRunning, g_instrumentConnected))
    , m_indicator(
          std::make_unique<RunIndicator>(static_cast<ButtonBarForm&>(*this), timing.storeWatch))
{
    setObjectName(QStringLiteral("MainWidget"));
    m_commFunc = new CommFunc(this);
    m_messageDialog = CustomMessageDialog::instance(this);
    m_readData = ReadData::instance();
    if (!m_link->discover()) {
        showReconnectView();
    }
    setStyleSheet(QStringLiteral("font-family:'Microsoft YaHei',Arial;"));
    if (m_runState->isConnected() && m_gate->isOpen()) {
        bringUp();
    }
}

MainWidget::~MainWidget()
{
    if (m_exportThread) {
        m_exportThread->requestStop();
    }
    silenceControls();
    m_gate->close();
    if (m_readData) {
        endThread(
            m_readData, [this] { m_readData->stop(); }, m_timing.threadEnd);
        m_readData = nullptr;
        // The instrument has forgotten the readings of a queued batch: store them now.
        if (m_graphicSetting) {
            QCoreApplication::sendPostedEvents(m_graphicSetting, QEvent::MetaCall);
            m_graphicSetting->storeReadings();
        }
    }
    if (m_inputReader) {
        endThread(
            m_inputReader, [this] { m_inputReader->stop(); }, m_timing.threadEnd);
        m_inputReader = nullptr;
    }
    if (m_exportThread) {
        // Terminating it would leave its files behind.
        awaitThread(m_exportThread, m_timing.threadEnd);
        m_exportThread = nullptr;
    }
}

/// Keeps the controls from calling slots while the window is destroyed: hiding it takes the focus away, and an
/// unfinished edit would then be sent.
void MainWidget::silenceControls()
{
    if (QWidget* const edited = QApplication::focusWidget()) {
        const QSignalBlocker blocker(edited);
        edited->clearFocus();
    }
    for (QObject* part : findChildren<QObject*>()) {
        part->disconnect(this);
    }
}

/// The part of the construction that needs an instrument. Runs later if there was none at the start.
void MainWidget::bringUp()
{
    buildInterface();
    setWindowTitle(tr("SCN4070A 控制软件"));
    m_lockManager = new WindowLockManager(this, m_timing.lock);
    m_lockManager->registerWindow(m_loggingPageContent);
    m_lockManager->registerWindow(m_channelTree);
    m_lockManager->registerWindow(m_instrumentPageContent);
    makeConnections();
    m_link->readAll();
    QTimer::singleShot(m_timing.startupView, [view = QPointer<LoadingView>(m_startupView)] {
        if (view) {
            view->stopLoading();
        }
    });
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    resize(600, 400);
    setVisible(false);
    // If the read-back has found the link dead, the recovery starts the acquisition.
    if (m_runState->isConnected()) {
        m_readData->start();
    }
}

/// Starts reading the launcher's lines. A read-back may block the GUI thread for long: the reader itself then
/// notices "exit" and ends the read-back.
void MainWidget::listenToLauncher()
{
    if (m_inputReader) {
        return;
    }
    m_inputReader = new InputReaderThread(this, m_timing.launcher.inputPoll);
    connect(m_inputReader, &InputReaderThread::newInputReceived, this, &MainWidget::handleInput);
    connect(
        m_inputReader, &InputReaderThread::newInputReceived, m_inputReader,
        [gate = m_gate](const QString& line) {
            if (line == kExitCommand) {
                gate->announceEnd();
            }
        },
        Qt::DirectConnection);
    m_inputReader->start();
}

/// `kind` is one of CustomMessageDialog::Kind.
void MainWidget::showMessage(const QString& text, int kind)
{
    m_messageDialog->showMessage(text, kind, static_cast<int>(m_timing.message.count()));
}

void MainWidget::buildInterface()
{
    m_startupView = new LoadingView(LoadingView::Busy, this);
    m_startupView->showLoading();

    m_mainLayout = new QVBoxLayout(this);
    removeMargins(m_mainLayout);
    m_contentWidget = new QWidget(this);
    m_contentWidget->setStyleSheet(QStringLiteral("background:rgb(23,23,23);"));
    m_contentLayout = new QHBoxLayout(m_contentWidget);
    removeMargins(m_contentLayout);

    m_settingsTabs = new QTabWidget(m_contentWidget);
    m_settingsTabs->setObjectName(QStringLiteral("myTabWidget"));
    m_settingsTabs->setFixedWidth(kSettingsTabsWidth);
    m_settingsTabs->setStyleSheet(m_commFunc->tabStyle());
    buildSettingsPages();
    m_settingsTabs->addTab(m_instrumentPage, tr("仪器设置"));
    m_settingsTabs->addTab(m_loggingPage, tr("数据记录设置"));
    m_settingsTabs->setCurrentIndex(1);

    m_workTabs = new QTabWidget(m_contentWidget);
    m_workTabs->setObjectName(QStringLiteral("myTabWidget1"));
    m_workTabs->setStyleSheet(m_commFunc->workspaceTabStyle());
    static_cast<ChannelForm&>(*this) = ChannelTableBuilder().build(
        m_workTabs, [this](QTreeWidget* tree) { placeWorkPages(tree); });

    m_contentLayout->addWidget(m_settingsTabs);
    m_contentLayout->addWidget(m_workTabs);
    static_cast<ButtonBarForm&>(*this) = ButtonBarBuilder().build(this);
    m_mainLayout->addWidget(m_contentWidget);
    m_mainLayout->addWidget(m_buttonBar);
}

void MainWidget::placeWorkPages(QTreeWidget* tree)
{
    m_graphicSetting = new GraphicSettingWidget(m_workTabs);
    m_workTabs->addTab(tree, QIcon(QStringLiteral(":/image/confChannel.png")), tr("配置通道"));
    m_workTabs->addTab(m_graphicSetting, QIcon(QStringLiteral(":/image/graphicsetting.png")),
                       tr("图形设置"));
}

void MainWidget::buildSettingsPages()
{
    const InstrumentPage instrument = InstrumentPageBuilder::build(m_settingsTabs);
    m_instrumentPage = instrument.page;
    m_instrumentPageContent = instrument.content;
    const LoggingPage logging = LoggingPageBuilder().build(m_settingsTabs);
    m_loggingPage = logging.page;
    m_loggingPageContent = logging.content;
    static_cast<LoggingForm&>(*this) = logging.form;
}

void MainWidget::makeConnections()
{
    connectRows();
    connect(m_channelTree, &QTreeWidget::itemChanged, this, &MainWidget::onItemChanged);
    connect(m_startButton, &ImageButton::clicked, this, &MainWidget::recvStartButtonSlot);
    connect(m_exportButton, &ImageButton::clicked, this, &MainWidget::recvExportButtonSlot);
    connect(m_lockManager, &WindowLockManager::unlocked, this, &MainWidget::recvLockScreenSlot);
    connect(m_usbLogCheck, &QCheckBox::toggled, this, &MainWidget::recvUsbSlot);
    for (QRadioButton* radio : {m_startNowRadio, m_startAtTimeRadio, m_startOnAlarmRadio}) {
        connect(radio, &QRadioButton::toggled, this, &MainWidget::recvStartSlot);
    }
    for (QRadioButton* radio : {m_intervalMinimumRadio, m_intervalCustomRadio,
                                m_intervalExternalRadio, m_intervalManualRadio}) {
        connect(radio, &QRadioButton::toggled, this, &MainWidget::recvIntervalSlot);
    }
    connect(m_intervalPicker, &TimePicker::sigTimePickerValueChanged, this,
            &MainWidget::recvIntervalPickerSlot);
    for (QRadioButton* radio : {m_stopManualRadio, m_stopElapsedRadio, m_stopCountRadio}) {
        connect(radio, &QRadioButton::toggled, this, &MainWidget::recvStopSlot);
    }
    connect(m_stopCountBox, qOverload<int>(&QSpinBox::valueChanged), this,
            &MainWidget::recvStopCountSlot);
    connect(m_storeWatch, &QTimer::timeout, this, [this] {
        m_indicator->showStoreState(m_curveStore && m_curveStore->refusesReadings());
    });
    connect(m_readData, &ReadData::sigStopScan, this, &MainWidget::recvStopScan);
    connect(m_readData, &ReadData::sigUseInst, this, &MainWidget::recvUseInstSlot);
}

void MainWidget::showEvent(QShowEvent*)
{
    assertGuiThread();
    // One arg() for both: a text that contains a marker must not be expanded.
    const QString line =
        QStringLiteral("WID:%1;COLOR:%2").arg(QString::number(winId()), QColor(43, 43, 43).name());
    m_launcherOutput->tell(line.toUtf8());
}

void MainWidget::handleInput(const QString& line)
{
    assertGuiThread();
    replyToParent(line);
    if (line == kExitCommand) {
        qDebug() << "child app received exit cmd!";
        QCoreApplication::quit();
    }
}

void MainWidget::replyToParent(const QString& line)
{
    assertGuiThread();
    m_launcherOutput->echo((QStringLiteral("receive msg: ") + line).toLocal8Bit());
}
