#include "app/mainwidget.h"

#include "acquisition/readdata.h"
#include "app/instrumentlink.h"
#include "common/guigate.h"
#include "common/helperthreads.h"
#include "common/threadassert.h"
#include "instrument/exchange.h"
#include "overlay/loadingview.h"
#include "overlay/windowlockmanager.h"
#include "plot/graphicsettingwidget.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "storage/curveseriesbuilder.h"
#include "storage/datadirectory.h"
#include "widgets/custommessagedialog.h"
#include "widgets/imagebutton.h"
#include "widgets/timepicker.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QRadioButton>
#include <QTimer>

namespace {

constexpr int kMessageMs = 3000;
/// Longer than the acquisition thread's pause between two passes.
constexpr unsigned long kLastPassMs = 2000;
constexpr int kWarningMessage = 0;
constexpr int kErrorMessage = 1;
/// Place of the running label in the button bar: right of the start button.
constexpr int kRunningLabelPosition = 1;
constexpr int kRecoveryForm = 1;
/// How often the running label looks whether the store takes readings.
constexpr int kStoreWatchMs = 500;

/// The local time in the form that the run's start and end are kept in.
QString runTimeText()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy MM dd hh mm ss"));
}

} // namespace

void MainWidget::recvStartButtonSlot()
{
    assertGuiThread();
    if (g_scanRunning) {
        // The acquisition thread drains the instrument and then clears the flag.
        stopElapsedTimer();
        scn::exchange(QStringLiteral("ABOR"));
        endScan();
        m_draining = true;
        return;
    }
    // Without the link a start would empty the store and measure nothing.
    if (m_starting || m_reconnecting || !g_instrumentConnected) {
        return;
    }
    if (g_scanChannels.isEmpty()) {
        m_messageDialog->showMessage(tr("未选择扫描通道"), kWarningMessage, kMessageMs);
        return;
    }
    enterStarting();

    if (m_curveStore) {
        // Another instrument may have been found since; the store stays where it is.
        removeDataDirectory(QFileInfo(m_curveStore->dataDirectory()).fileName());
        m_curveStore->clearAll();
        return;
    }
    const QString directoryName = dataDirectoryName(g_instrumentId);
    removeDataDirectory(directoryName);
    m_curveStore = CurveDataDB::instance(directoryName);
    connect(m_curveStore, &CurveDataDB::sigClearFinished, this, &MainWidget::recvDataClearFinished);
    recvDataClearFinished();
}

void MainWidget::enterStarting()
{
    m_starting = true;
    m_startButton->setLeftIcon(QIcon(QStringLiteral(":/image/stop.png")));
    m_startButton->setText(tr("停止"));
    m_exportButton->setEnabled(false);
    m_buttonBarLayout->insertWidget(kRunningLabelPosition, m_runningLabel);
    showRunning(false);
    m_runningLabel->show();
    m_storeWatch->start(kStoreWatchMs);
    m_startupView->showLoading();
}

/// Says beside the running label when readings cannot be stored.
void MainWidget::showStoreState()
{
    assertGuiThread();
    showRunning(m_curveStore && m_curveStore->refusesReadings());
}

void MainWidget::showRunning(bool refuses)
{
    const QString running = tr("数据记录正在运行..");
    m_runningLabel->setText(refuses ? running + tr("（数据无法保存）") : running);
    m_runningLabel->setStyleSheet(refuses ? QStringLiteral("color: #FFA500;") : QString());
}

void MainWidget::recvDataClearFinished()
{
    assertGuiThread();
    m_graphicSetting->rebuildChannelLists();
    // No chart shows a series any more. The new ones are built aside, since each new curve takes its
    // time, and handed over whole before the scan starts.
    g_curveSeries.clear();
    HelperThreads::start([gate = m_gate, window = this, channels = g_scanChannels,
                          directoryName = dataDirectoryName(g_instrumentId)] {
        const auto series =
            buildCurveSeries(channels, directoryName, [&gate] { return gate->isOpen(); });
        gate->post([series, window] {
            g_curveSeries = series;
            QMetaObject::invokeMethod(window, "scanFunc", Qt::QueuedConnection);
        });
    });
}

void MainWidget::scanFunc()
{
    assertGuiThread();
    if (m_reconnecting || !g_instrumentConnected) {
        // Lost since the click: the recovery, which has its overlay up, gives the button back.
        m_starting = false;
        return;
    }
    if (scn::exchange(QStringLiteral("*IDN?")).isEmpty()) {
        m_starting = false;
        m_messageDialog->showMessage(tr("机器已断开"), kErrorMessage, kMessageMs);
        // The acquisition thread need not miss that one reply, so nobody else reports the loss.
        m_link->giveUp();
        return;
    }
    scn::exchange(QStringLiteral("MMEM:LOG:ENAB?"));
    scn::exchange(QStringLiteral("INIT"));
    if (m_stopElapsedRadio->isChecked()) {
        startElapsedTimer();
    }
    for (const char* command : {"FORM:READ:ALAR ON", "FORM:READ:CHAN ON", "FORM:READ:TIME ON",
                                "FORM:READ:TIME:TYPE ABS", "FORM:READ:UNIT ON", "SYST:ERR?"}) {
        scn::exchange(QLatin1String(command));
    }

    if (scn::exchange(QStringLiteral("ROUT:SCAN?")).count(QLatin1Char(',')) + 1 !=
        g_scanChannels.size()) {
        dropUnnamedScanChannels();
    }

    // The instrument's scan time is asked for twice and serves nothing: a run starts at the
    // computer's time.
    scn::exchange(QStringLiteral("SYST:TIME:SCAN?"));
    g_scanStartText = scn::exchange(QStringLiteral("SYST:TIME:SCAN?"))
                          .replace(QLatin1Char(','), QLatin1Char(' '));
    g_scanStartText = runTimeText();

    m_draining = false;
    g_scanRunning = true;
    m_starting = false;
    m_lockManager->setLockEnabled(true);
    m_lockManager->lockView();
    m_startupView->stopLoading();
}

/// Removes the channels of the scan list that have no unit text.
void MainWidget::dropUnnamedScanChannels()
{
    for (auto entry = g_scanChannels.begin(); entry != g_scanChannels.end();) {
        if (entry.value().isEmpty()) {
            entry = g_scanChannels.erase(entry);
        } else {
            ++entry;
        }
    }
}

void MainWidget::startElapsedTimer()
{
    if (!m_elapsedTimer) {
        m_elapsedTimer = std::make_unique<QTimer>();
        connect(m_elapsedTimer.get(), &QTimer::timeout, this, &MainWidget::recvElapsedTimeSlot);
    }
    m_elapsedTimer->setInterval(static_cast<int>(m_stopElapsedPicker->value() * 1000));
    m_elapsedTimer->start();
}

void MainWidget::stopElapsedTimer()
{
    if (m_elapsedTimer) {
        m_elapsedTimer->stop();
    }
}

/// Notes the end of the run and shows the idle state. A run that the button has stopped ended then,
/// not when its last readings are there.
void MainWidget::endScan()
{
    if (!m_draining) {
        g_scanEndText = runTimeText();
    }
    resetStartButton();
}

void MainWidget::resetStartButton()
{
    m_startButton->setLeftIcon(QIcon(QStringLiteral(":/image/start.png")));
    m_startButton->setText(tr("开始"));
    m_exportButton->setEnabled(true);
    m_runningLabel->hide();
    m_storeWatch->stop();
}

void MainWidget::recvStopScan()
{
    assertGuiThread();
    if (g_scanRunning) {
        return;
    }
    stopElapsedTimer();
    endScan();
}

void MainWidget::recvElapsedTimeSlot()
{
    assertGuiThread();
    stopElapsedTimer();
    // Once the instrument is found again, the recovery stops it and its readings are fetched.
    if (!g_instrumentConnected) {
        return;
    }
    scn::exchange(QStringLiteral("ABOR"));
    g_scanRunning = false;
    endScan();
}

void MainWidget::recvLockScreenSlot()
{
    assertGuiThread();
    // The bar can be held when the scan has ended by itself, or when the button has stopped it and
    // its last readings are being fetched; the end of that scan stays.
    if (!g_scanRunning || m_draining) {
        return;
    }
    stopElapsedTimer();
    g_scanRunning = false;
    scn::exchange(QStringLiteral("ABOR"));
    endScan();
}

void MainWidget::recvUseInstSlot()
{
    assertGuiThread();
    // Whoever looks for the instrument already decides whether it is there.
    if (!m_reconnecting) {
        m_link->giveUp();
    }
}

void MainWidget::showReconnectView()
{
    assertGuiThread();
    if (!m_reconnectView) {
        m_reconnectView = new LoadingView(kRecoveryForm, this);
        connect(m_reconnectView, &LoadingView::confirmRequested, this,
                &MainWidget::recvLoadBtnSlot);
    }
    if (m_startupView && !m_startupView->isHidden()) {
        m_startupView->stopLoading();
    }
    // Hiding brings the recovery form back.
    m_reconnectView->stopLoading();
    m_reconnectView->showLoading();
}

void MainWidget::recvLoadBtnSlot()
{
    assertGuiThread();
    if (m_reconnecting) {
        return;
    }
    m_reconnecting = true;
    scn::RecoverySteps steps;
    steps.fail = [this] {
        // The button comes back with the leave to use it: a click in between would be lost.
        m_reconnecting = false;
        m_link->giveUp();
    };
    steps.buildPages = [this] { return bringUpLate(); };
    steps.finish = [this] {
        m_reconnecting = false;
        QMetaObject::invokeMethod(this, "stopLoadingView", Qt::QueuedConnection);
    };
    m_link->recover(steps);
}

/// Builds the pages where the window stands, when there was no instrument at start. False when they are
/// there already.
bool MainWidget::bringUpLate()
{
    if (m_channelTree) {
        return false;
    }
    const QRect place = geometry();
    bringUp();
    setGeometry(place);
    show();
    if (g_instrumentConnected) {
        m_reconnectView->stopLoading();
    }
    m_reconnecting = false;
    return true;
}

void MainWidget::stopLoadingView()
{
    assertGuiThread();
    m_reconnectView->stopLoading();
    // A start that met the loss has left the button and the label behind.
    if (!g_scanRunning && !m_starting) {
        resetStartButton();
    }
    if (m_readData->isPolling()) {
        return;
    }
    // A thread that has reported the loss may still be in its last pause; starting it then would do
    // nothing.
    m_readData->wait(kLastPassMs);
    m_readData->start();
}
