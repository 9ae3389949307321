#include "app/mainwidget.h"

#include "app/exportform.h"
#include "common/threadassert.h"
#include "export/csvexportfromdbthread.h"
#include "export/exportoutcome.h"
#include "export/exportrequest.h"
#include "overlay/loadingview.h"
#include "plot/graphicsettingwidget.h"
#include "state/globals.h"
#include "storage/curvedatadb.h"
#include "widgets/customcombobox.h"
#include "widgets/customdialog.h"
#include "widgets/custommessagedialog.h"

#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>

namespace {

constexpr QSize kDialogSize(480, 330);

} // namespace

void MainWidget::recvExportButtonSlot()
{
    assertGuiThread();
    if (m_exportThread) { // one at a time, also for the keyboard
        return;
    }
    if (!m_exportDialog) {
        buildExportDialog();
    }
    m_exportNameEdit->setFocus();
    m_exportNameEdit->selectAll();
    m_exportDialog->exec();
}

void MainWidget::buildExportDialog()
{
    m_exportDialog = new CustomDialog(this);
    m_exportDialog->setTitle(tr("将数据导出到CSV"));
    m_exportDialog->setFixedSize(kDialogSize);
    // The labels' background everywhere. Appending works only after the first style sheet was applied.
    m_exportDialog->ensurePolished();
    m_exportDialog->setStyleSheet(
        m_exportDialog->styleSheet() +
        QStringLiteral(
            "CustomDialog, CustomDialog > QWidget, QGroupBox { background-color: #444444; }"
            "QGroupBox { border-color: #707070; } QGroupBox::title { background-color: #444444; }"
            "QLineEdit { background-color: #171717; }"));

    auto* form = new scn::ExportForm;
    m_exportDialog->setContent(form);
    m_separatorBox = form->separatorBox();
    m_exportDirectoryLabel = form->directoryLabel();
    m_exportNameEdit = form->nameEdit();
    connect(form, &scn::ExportForm::browseRequested, this, &MainWidget::recvBrowseButtonSlot);
    connect(form, &scn::ExportForm::exportRequested, this, &MainWidget::recvExportFileButtonSlot);
    connect(form, &scn::ExportForm::closeRequested, m_exportDialog, &CustomDialog::onCloseClicked);
}

void MainWidget::recvBrowseButtonSlot()
{
    assertGuiThread();
    const QString directory = QFileDialog::getExistingDirectory(
        m_exportDialog, tr("Select Directory"), m_exportDirectoryLabel->text());
    // Cancelling keeps the directory.
    if (!directory.isEmpty()) {
        m_exportDirectoryLabel->setText(QDir::toNativeSeparators(directory));
    }
}

void MainWidget::recvExportFileButtonSlot()
{
    assertGuiThread();
    if (m_exportThread) {
        return;
    }
    m_graphicSetting->storeReadings();
    const QList<int> curveIds = m_curveStore ? m_curveStore->curveNames().keys() : QList<int>();
    if (curveIds.isEmpty()) {
        showMessage(tr("没有相关轨迹数据"), CustomMessageDialog::Information);
        return;
    }
    if (!m_exportView) {
        m_exportView = new LoadingView(LoadingView::Busy, this);
    }
    m_exportDialog->close();
    m_exportView->showLoading();

    const scn::ExportRange range = exportRange(g_scanStartText, g_scanEndText);
    m_exportThread = new CsvExportFromDBThread(
        m_curveStore, curveIds,
        exportFilePath(m_exportDirectoryLabel->text(), g_instrumentId, m_exportNameEdit->text()),
        exportSeparator(m_separatorBox->currentIndex()),
        exportHeader(g_resourceName, g_instrumentId, g_scanStartText, g_scanEndText), range.start,
        range.end);
    connect(m_exportThread, &CsvExportFromDBThread::exportFinished, this,
            &MainWidget::showExportOutcome, Qt::QueuedConnection);
    m_exportThread->startExport();
}

/// Shows the outcome of an export and releases its thread.
void MainWidget::showExportOutcome(ExportResult result, const QStringList& files)
{
    assertGuiThread();
    m_exportView->stopLoading();
    showMessage(exportOutcomeText(result, files), CustomMessageDialog::Information);
    if (m_exportThread->isExporting()) {
        m_exportThread->requestStop();
    }
    m_exportThread->deleteLater();
    m_exportThread = nullptr;
}
