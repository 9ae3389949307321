#include "plot/barchartwidget.h"

#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "plot/ccurveplot.h"
#include "plot/chartcurves.h"
#include "plot/colorselectbutton.h"
#include "plot/curveoffsetcontroller.h"
#include "plot/curvetable.h"
#include "state/globals.h"
#include "widgets/customcombobox.h"
#include "widgets/wheelguard.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSizeGrip>
#include <QSplitter>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <qwt_plot_curve.h>

using namespace scn;

namespace {
constexpr QMargins kOuterMargins(10, 10, 1, 0);
constexpr int kPlotStretch = 7;
constexpr int kTableStretch = 2;
constexpr int kPlotStretchAlone = 9;
constexpr int kTableStretchHidden = 1;
constexpr int kContainerMaximumHeight = 2000;
constexpr int kControlHeight = 20;  ///< below the plot
constexpr int kTableHeight = 96;    ///< the header and two rows
constexpr int kHeightForBoth = 284; ///< of the chart, for the table below a plot of 100 pixels
} // namespace

BarChartWidget::BarChartWidget(QWidget* parent)
    : QWidget(parent)
{
    assertGuiThread();
    buildLayout();
}

BarChartWidget::~BarChartWidget()
{
    assertGuiThread();
    delete m_splitter;
}

void BarChartWidget::clearChart()
{
    assertGuiThread();
    m_curves->clear();
}

void BarChartWidget::setChannelList(const QStringList& items)
{
    assertGuiThread();
    if (items.isEmpty()) {
        return;
    }
    m_table->setChannelList(items);
    m_curves->forgetOffsetBoxes();
}

void BarChartWidget::rebuildChannelList(const QStringList& items)
{
    clearChart();
    setChannelList(items);
}

void BarChartWidget::onNewSample(qint64 timeMs)
{
    assertGuiThread();
    m_plot->onNewSample(timeMs);
}

void BarChartWidget::onChannelTypeChange(int index)
{
    assertGuiThread();
    auto* combo = qobject_cast<QComboBox*>(sender());
    if (index < 0 || !combo) {
        return;
    }
    const int row = m_table->rowOf(combo);
    if (index == 0) {
        m_table->resetOffset(row);
        m_curves->showSelected(*m_table, row);
        return;
    }
    if (row < 0 || row >= m_table->rowCount()) {
        return;
    }
    const int channel = labelOfChannelText(combo->currentText());
    QwtPlotCurve* curve = m_curves->curveOf(channel);
    m_table->enableRow(row, m_plot->curveOffset(curve), g_scanChannels[channel]);
    if (curve && curve->isVisible()) {
        // Another row shows this channel. Resetting to "none" re-enters this slot for this row.
        combo->setCurrentIndex(0);
        return;
    }
    m_curves->showSelected(*m_table, row);
}

void BarChartWidget::onColorChanged(QColor newColor)
{
    assertGuiThread();
    const int row = m_table->rowOf(sender());
    const QComboBox* combo = m_table->channelBox(row);
    if (!combo || combo->currentIndex() <= 0) {
        return;
    }
    m_curves->setColor(labelOfChannelText(combo->currentText()), newColor);
}

void BarChartWidget::onOffsetChanged(double value)
{
    assertGuiThread();
    const int row = m_table->rowOf(sender());
    const QComboBox* combo = m_table->channelBox(row);
    if (!combo || combo->currentIndex() <= 0) {
        return;
    }
    m_curves->setOffset(labelOfChannelText(combo->currentText()), value);
}

void BarChartWidget::hideTableWidget()
{
    assertGuiThread();
    if (!m_table) {
        return;
    }
    m_table->appear();
    if (m_table->widget()->isVisible()) {
        m_table->widget()->hide();
        m_toggleButton->setText(tr("▲选择通道"));
        m_tableContainer->setMinimumHeight(m_toggleButton->height());
        m_tableContainer->setMaximumHeight(m_toggleButton->height());
        m_splitter->setStretchFactor(0, kPlotStretchAlone);
        m_splitter->setStretchFactor(1, kTableStretchHidden);
    } else {
        m_table->widget()->show();
        m_toggleButton->setText(tr("▼选择通道"));
        m_tableContainer->setMaximumHeight(kContainerMaximumHeight);
        m_tableContainer->setMinimumHeight(0);
        m_splitter->setStretchFactor(0, kPlotStretch);
        m_splitter->setStretchFactor(1, kTableStretch);
    }
}

void BarChartWidget::onCurrDisPlot()
{
    assertGuiThread();
    if (m_plot) {
        m_plot->resumeLive();
    }
}

void BarChartWidget::onPlotZoomTypeChanged(int index)
{
    assertGuiThread();
    if (index >= 0 && m_plot) {
        m_plot->setZoomMode(static_cast<short>(index + 1));
    }
}

void BarChartWidget::setOffset(QwtPlotCurve* curve, double offset)
{
    assertGuiThread();
    if (!curve || !m_plot) {
        return;
    }
    m_plot->setCurveOffset(curve, offset);
    if (QDoubleSpinBox* spinBox = m_curves->offsetBoxOf(curve)) {
        const QSignalBlocker blocker(spinBox);
        spinBox->setValue(offset);
    }
}

/// In a window that is on the screen, the first turn of the event loop draws the chart and the second its table.
void BarChartWidget::showEvent(QShowEvent* event)
{
    assertGuiThread();
    QWidget::showEvent(event);
    const QWindow* onScreen = window()->windowHandle();
    if (!onScreen || !onScreen->isExposed()) {
        m_table->appear();
        return;
    }
    QTimer::singleShot(0, this,
                       [this] { QTimer::singleShot(0, this, [this] { m_table->appear(); }); });
}

void BarChartWidget::resizeEvent(QResizeEvent* event)
{
    assertGuiThread();
    QWidget::resizeEvent(event);
    giveTableItsRoom();
}

/// In a window as low as it opens there is no room for plot and table, so the table gives way: nothing may
/// cover the plot. In a higher one at least two rows stay visible.
void BarChartWidget::giveTableItsRoom()
{
    const bool hasRoom = height() >= kHeightForBoth;
    m_table->widget()->setMinimumHeight(hasRoom ? kTableHeight : 1);
}

void BarChartWidget::buildLayout()
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kOuterMargins);
    // In a window as low as it opens, every pixel is the plot's.
    layout->setSpacing(0);
    m_splitter = new QSplitter(Qt::Vertical, this);
    m_splitter->setOpaqueResize(true);
    m_splitter->setChildrenCollapsible(false);
    layout->addWidget(m_splitter);
    layout->addWidget(new QSizeGrip(this), 0, Qt::AlignBottom | Qt::AlignRight);
    // Every widget is created in place: moving it later would restyle all its children, and a restyled
    // combo box creates its popup.
    buildPlotArea();
    buildTableArea();
    m_splitter->setStretchFactor(0, kPlotStretch);
    m_splitter->setStretchFactor(1, kTableStretch);
}

void BarChartWidget::buildPlotArea()
{
    auto* area = new QWidget(m_splitter);
    auto* layout = new QVBoxLayout(area);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_plot = new CCurvePlot(area);
    m_offsetController = new CurveOffsetController(m_plot, area);
    m_curves = std::make_unique<ChartCurves>(m_plot, m_offsetController);
    connect(m_offsetController, &CurveOffsetController::offsetChanged, this,
            &BarChartWidget::setOffset);
    auto* plotRow = new QHBoxLayout;
    plotRow->addWidget(m_offsetController);
    plotRow->addWidget(m_plot);
    layout->addLayout(plotRow);

    auto* liveButton = new QPushButton(tr("实时显示"), area);
    liveButton->setStyleSheet(QStringLiteral("background:#171717;"));
    connect(liveButton, &QPushButton::clicked, this, &BarChartWidget::onCurrDisPlot);
    auto* zoomBox = new CustomComboBox(area);
    zoomBox->addFunctionItems({tr("水平"), tr("垂直"), tr("双向")});
    WheelGuard::install(zoomBox);
    connect(zoomBox, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &BarChartWidget::onPlotZoomTypeChanged);
    liveButton->setFixedHeight(kControlHeight);
    // The application's style sheet gives boxes a least height, which only a style sheet can lower.
    zoomBox->setStyleSheet(QStringLiteral("QComboBox { min-height: 0; }"));
    zoomBox->setFixedHeight(kControlHeight);
    auto* controlRow = new QHBoxLayout;
    controlRow->addStretch();
    controlRow->addWidget(liveButton);
    controlRow->addWidget(zoomBox);
    layout->addLayout(controlRow);
}

void BarChartWidget::buildTableArea()
{
    m_tableContainer = new QWidget(m_splitter);
    m_tableContainer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* layout = new QVBoxLayout(m_tableContainer);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_toggleButton = new QPushButton(tr("▲选择通道"), m_tableContainer);
    m_toggleButton->setStyleSheet(QStringLiteral("text-align: left; padding-left: 8px;"));
    connect(m_toggleButton, &QPushButton::clicked, this, &BarChartWidget::hideTableWidget);
    layout->addWidget(m_toggleButton);
    // Or the first of its parents that is shown would style the table's widgets with itself.
    ensurePolished();
    m_table = std::make_unique<CurveTable>(m_tableContainer);
    for (int row = 0; row < m_table->rowCount(); ++row) {
        connectRow(row);
    }
    layout->addWidget(m_table->widget());
}

/// The slots find the row by their sender.
void BarChartWidget::connectRow(int row)
{
    connect(m_table->colorButton(row), &ColorSelectButton::colorChanged, this,
            &BarChartWidget::onColorChanged);
    connect(m_table->channelBox(row), qOverload<int>(&QComboBox::currentIndexChanged), this,
            &BarChartWidget::onChannelTypeChange);
    connect(m_table->offsetBox(row), qOverload<double>(&QDoubleSpinBox::valueChanged), this,
            &BarChartWidget::onOffsetChanged);
}
