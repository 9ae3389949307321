#include "app/mainwidget.h"

#include "acquisition/readdata.h"
#include "app/instrumentlink.h"
#include "app/runindicator.h"
#include "app/runstate.h"
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
#include "widgets/timepicker.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDebug>
#include <QFileInfo>
#include <QRadioButton>
#include <QTimer>

using namespace scn;

namespace {

/// The local time in the format of g_scanStartText and g_scanEndText.
QString runTimeText()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyy MM dd hh mm ss"));
}

/// Removes channels without a unit from the scan list.
void dropUnnamedScanChannels()
{
    for (auto entry = g_scanChannels.begin(); entry != g_scanChannels.end();) {
        if (entry.value().isEmpty()) {
            entry = g_scanChannels.erase(entry);
        } else {
            ++entry;
        }
    }
}

} // namespace

void MainWidget::recvStartButtonSlot()
{
    assertGuiThread();
    m_graphicSetting->storeReadings();
    const bool isFirstStop = !m_runState->isStoppedByButton();
    if (m_runState->take(RunEvent::StopRequested)) {
        // The acquisition thread clears the flag after the drain.
        stopElapsedTimer();
        exchange(QStringLiteral("ABOR"));
        if (isFirstStop) {
            g_scanEndText = runTimeText();
        }
        m_indicator->showIdle();
        return;
    }
    // Without the link a start would clear the store and measure nothing.
    if (!m_runState->allows(RunEvent::StartRequested)) {
        return;
    }
    if (g_scanChannels.isEmpty()) {
        showMessage(tr("未选择扫描通道"), CustomMessageDialog::Warning);
        return;
    }
    m_runState->take(RunEvent::StartRequested);
    m_indicator->showStarted();
    m_startupView->showLoading();

    if (m_curveStore) {
        // The instrument may be another one by now; the store stays where it is.
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

void MainWidget::recvDataClearFinished()
{
    assertGuiThread();
    m_graphicSetting->rebuildChannelLists();
    // No chart shows a series any more. A helper builds the new ones, since each curve takes its time, and
    // hands them over complete before the scan starts.
    g_curveSeries.clear();
    scn::helperthreads::start([gate = m_gate, window = this, channels = g_scanChannels,
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
    if (!m_runState->allows(RunEvent::ScanStarted)) {
        // Lost since the click. The recovery resets the button.
        m_runState->take(RunEvent::StartDropped);
        return;
    }
    if (exchange(QStringLiteral("*IDN?")).isEmpty()) {
        m_runState->take(RunEvent::StartDropped);
        showMessage(tr("机器已断开"), CustomMessageDialog::Error);
        // The acquisition thread may not notice, so the loss is reported here.
        m_link->giveUp();
        return;
    }
    exchange(QStringLiteral("MMEM:LOG:ENAB?"));
    exchange(QStringLiteral("INIT"));
    if (m_stopElapsedRadio->isChecked()) {
        startElapsedTimer();
    }
    for (const char* command : {"FORM:READ:ALAR ON", "FORM:READ:CHAN ON", "FORM:READ:TIME ON",
                                "FORM:READ:TIME:TYPE ABS", "FORM:READ:UNIT ON", "SYST:ERR?"}) {
        exchange(QLatin1String(command));
    }

    if (exchange(QStringLiteral("ROUT:SCAN?")).count(QLatin1Char(',')) + 1 !=
        g_scanChannels.size()) {
        dropUnnamedScanChannels();
    }

    // The instrument is asked for the scan's time twice, but a run starts at the computer's time.
    exchange(QStringLiteral("SYST:TIME:SCAN?"));
    g_scanStartText =
        exchange(QStringLiteral("SYST:TIME:SCAN?")).replace(QLatin1Char(','), QLatin1Char(' '));
    g_scanStartText = runTimeText();

    m_runState->take(RunEvent::ScanStarted);
    qInfo() << "扫描开始";
    m_lockManager->setLockEnabled(true);
    m_lockManager->lockView();
    m_startupView->stopLoading();
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

/// Records the end of the run and shows the idle state. A run stopped by the button ended with the click, not
/// with the drain.
void MainWidget::endScan()
{
    qInfo() << "扫描结束";
    if (!m_runState->isStoppedByButton()) {
        g_scanEndText = runTimeText();
    }
    m_indicator->showIdle();
}

void MainWidget::recvStopScan()
{
    assertGuiThread();
    m_graphicSetting->storeReadings();
    if (!m_runState->take(scn::RunEvent::ScanEnded)) {
        return;
    }
    stopElapsedTimer();
    endScan();
}

void MainWidget::recvElapsedTimeSlot()
{
    assertGuiThread();
    m_graphicSetting->storeReadings();
    stopElapsedTimer();
    if (!m_runState->allows(RunEvent::TimeElapsed)) {
        return;
    }
    exchange(QStringLiteral("ABOR"));
    m_runState->take(RunEvent::TimeElapsed);
    endScan();
}

void MainWidget::recvLockScreenSlot()
{
    assertGuiThread();
    m_graphicSetting->storeReadings();
    // Refused after the scan has ended by itself and during a drain: the recorded end stays.
    if (!m_runState->take(RunEvent::Unlocked)) {
        return;
    }
    stopElapsedTimer();
    exchange(QStringLiteral("ABOR"));
    endScan();
}

void MainWidget::recvUseInstSlot()
{
    assertGuiThread();
    if (m_runState->take(RunEvent::LossReported)) {
        m_link->giveUp();
    }
}

void MainWidget::showReconnectView()
{
    assertGuiThread();
    if (!m_reconnectView) {
        m_reconnectView = new LoadingView(LoadingView::Recovery, this);
        connect(m_reconnectView, &LoadingView::confirmRequested, this,
                &MainWidget::recvLoadBtnSlot);
    }
    if (m_startupView && !m_startupView->isHidden()) {
        m_startupView->stopLoading();
    }
    // Hiding it restores its button.
    m_reconnectView->stopLoading();
    m_reconnectView->showLoading();
}

void MainWidget::recvLoadBtnSlot()
{
    assertGuiThread();
    if (!m_runState->take(RunEvent::RecoveryRequested)) {
        return;
    }
    RecoverySteps steps;
    steps.fail = [this] {
        // First the state, then the overlay with its button: a click in between would be lost.
        m_runState->take(RunEvent::RecoveryEnded);
        m_link->giveUp();
    };
    steps.buildPages = [this] { return bringUpLate(); };
    steps.finish = [this] {
        m_runState->take(RunEvent::RecoveryEnded);
        QMetaObject::invokeMethod(this, "stopLoadingView", Qt::QueuedConnection);
    };
    m_link->recover(steps);
}

/// Builds the pages if there was no instrument at the start, and keeps the window in its place. Returns false if
/// they exist already.
bool MainWidget::bringUpLate()
{
    if (m_channelTree) {
        return false;
    }
    const QRect place = geometry();
    bringUp();
    setGeometry(place);
    show();
    if (m_runState->isConnected()) {
        m_reconnectView->stopLoading();
    }
    m_runState->take(RunEvent::RecoveryEnded);
    return true;
}

void MainWidget::stopLoadingView()
{
    assertGuiThread();
    m_reconnectView->stopLoading();
    // A start that met the loss has not reset the button and the label.
    if (m_runState->run() == RunState::Idle) {
        m_indicator->showIdle();
    }
    // The loss took the overlay of a start away whose series are still being made.
    if (m_runState->state() == RunState::Starting) {
        m_startupView->showLoading();
    }
    if (m_readData->isPolling()) {
        return;
    }
    // After reporting the loss the thread may still be in its last pause, when start() does nothing.
    m_readData->wait(QDeadlineTimer(m_timing.lastPass));
    m_readData->start();
}
