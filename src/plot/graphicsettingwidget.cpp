#include "plot/graphicsettingwidget.h"

#include "acquisition/readdata.h"
#include "common/channelnumber.h"
#include "common/threadassert.h"
#include "plot/barchartwidget.h"
#include "plot/batchintake.h"
#include "plot/custommdisubwindow.h"
#include "plot/datanetwork.h"
#include "plot/workspacearea.h"
#include "state/globals.h"
#include "widgets/flatbuttonstyle.h"
#include "widgets/sidebar.h"

#include <QDebug>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kPageSpacing = 3;
constexpr int kSideBarWidth = 80;
constexpr int kSideBarMargin = 10;
constexpr int kToolButtonSide = 60;
constexpr QSize kWindowSize(480, 220);

QString chartIcon()
{
    return QStringLiteral(":/image/graphicsetting.png");
}
QString gridIcon()
{
    return QStringLiteral(":/image/DataNetwork.png");
}
} // namespace

GraphicSettingWidget::GraphicSettingWidget(QWidget* parent,
                                           std::chrono::milliseconds registrationInterval)
    : QWidget(parent)
    , m_intake(std::make_unique<scn::BatchIntake>(
          registrationInterval, [this](const MeasurementData& last) { showBatch(last); }))
{
    assertGuiThread();
    setStyleSheet(QStringLiteral("background-color:black;"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(kPageSpacing);
    buildSideBar();
    QPushButton* chartButton = addToolButton(chartIcon(), tr("新建图形窗口"));
    QPushButton* gridButton = addToolButton(gridIcon(), tr("新建数据网格"));
    static_cast<QVBoxLayout*>(m_sideBar->content()->layout())->addStretch();
    layout->addWidget(m_sideBar);
    buildArea();
    layout->addWidget(m_mdiArea, 1);
    connect(chartButton, &QPushButton::clicked, this, &GraphicSettingWidget::recvGraphicBtnSlots);
    connect(gridButton, &QPushButton::clicked, this,
            &GraphicSettingWidget::recvDataNetworkBtnSlots);
    connect(ReadData::instance(), &ReadData::sigSendMeasure, this,
            &GraphicSettingWidget::refreshCurveSeriesDataSlot);
}

GraphicSettingWidget::~GraphicSettingWidget()
{
    assertGuiThread();
    // The windows report their destruction to this object, so they must go while it is intact: also those
    // that are closed, which the area has no longer in its list, but not yet deleted.
    disconnect(m_mdiArea, nullptr, this, nullptr);
    qDeleteAll(m_mdiArea->findChildren<QMdiSubWindow*>());
}

void GraphicSettingWidget::rebuildChannelLists()
{
    assertGuiThread();
    const QStringList channels = channelList();
    const QList<scn::WorkspaceView*> open = views();
    for (scn::WorkspaceView* view : open) {
        view->rebuildChannelList(channels);
    }
}

void GraphicSettingWidget::recvGraphicBtnSlots()
{
    assertGuiThread();
    openWindow<BarChartWidget>(chartIcon(), tr("图形设置"));
}

void GraphicSettingWidget::recvDataNetworkBtnSlots()
{
    assertGuiThread();
    openWindow<DataNetwork>(gridIcon(), tr("数据网格"));
}

void GraphicSettingWidget::onSubWindowActivated(QMdiSubWindow* subWindow)
{
    assertGuiThread();
    if (!subWindow) {
        return;
    }
    const QList<QMdiSubWindow*> windows = m_mdiArea->subWindowList();
    for (QMdiSubWindow* window : windows) {
        window->update();
    }
}

void GraphicSettingWidget::refreshCurveSeriesDataSlot(QList<MeasurementData> dataList)
{
    assertGuiThread();
    m_intake->take(dataList);
}

void GraphicSettingWidget::storeReadings()
{
    assertGuiThread();
    m_intake->finish();
}

/// Tells every window of a batch that has been stored.
void GraphicSettingWidget::showBatch(const MeasurementData& last)
{
    const qint64 lastTime = last.time.toMSecsSinceEpoch();
    const QList<scn::WorkspaceView*> open = views();
    for (scn::WorkspaceView* view : open) {
        view->onNewSample(lastTime);
    }
}

void GraphicSettingWidget::buildSideBar()
{
    m_sideBar = new SideBar(this);
    m_sideBar->setSide(false);
    m_sideBar->setOpenWidth(kSideBarWidth);
    m_sideBar->setTitle(tr("小工具"));
    // The strip is hidden while the bar is open, and the tools need its pixels.
    m_sideBar->content()->setMaximumWidth(kSideBarWidth);

    auto* layout = new QVBoxLayout(m_sideBar->content());
    layout->setContentsMargins(kSideBarMargin, kSideBarMargin, kSideBarMargin, kSideBarMargin);
}

QPushButton* GraphicSettingWidget::addToolButton(const QString& iconPath, const QString& toolTip)
{
    auto* button = new QPushButton(m_sideBar->content());
    button->setIcon(QIcon(iconPath));
    button->setToolTip(toolTip);
    button->setIconSize(QSize(kToolButtonSide, kToolButtonSide));
    button->setFixedSize(kToolButtonSide, kToolButtonSide);
    button->setStyleSheet(scn::flatButtonStyle());
    m_sideBar->content()->layout()->addWidget(button);
    return button;
}

void GraphicSettingWidget::buildArea()
{
    m_mdiArea = new scn::WorkspaceArea(this);
    m_mdiArea->setBackground(Qt::NoBrush);
    m_mdiArea->setViewMode(QMdiArea::SubWindowView);
    m_mdiArea->setActivationOrder(QMdiArea::ActivationHistoryOrder);
    // Each window keeps its own state: a new one its size, a tile its picture.
    m_mdiArea->setOption(QMdiArea::DontMaximizeSubWindowOnActivation);
    connect(m_mdiArea, &QMdiArea::subWindowActivated, this,
            &GraphicSettingWidget::onSubWindowActivated);
}

template <typename Content>
void GraphicSettingWidget::openWindow(const QString& iconPath, const QString& titleText)
{
    // addSubWindow() makes the area the parent. As the parent from the start it would adopt a half-built
    // window and warn about the second time.
    auto* window = new CustomMdiSubWindow(iconPath, nullptr);
    window->resize(kWindowSize);
    ++m_windowCounter;
    window->setTitle(titleText + QString::number(m_windowCounter));
    m_mdiArea->addSubWindow(window);
    // Created in place: a view that is moved there afterwards is styled twice, which takes longer than
    // everything else.
    auto* content = new Content(window->contentParent());
    window->setContentWidget(content);
    window->show();
    forgetWindowWhenDestroyed(window);
    m_subWindows[window] = content;
    content->setChannelList(channelList());
}

/// The handler uses the pointer's value only: the window is half destroyed when it runs. Called once per
/// window, so the connection is unique.
void GraphicSettingWidget::forgetWindowWhenDestroyed(QMdiSubWindow* window)
{
    connect(window, &QObject::destroyed, this, [this, window] {
        if (m_subWindows.remove(window) > 0) {
            qDebug() << "子窗口已销毁，已从map中移除";
        }
    });
}

/// The views of the open windows, in the order of opening.
QList<scn::WorkspaceView*> GraphicSettingWidget::views() const
{
    QList<scn::WorkspaceView*> views;
    const QList<QMdiSubWindow*> windows = m_mdiArea->subWindowList();
    for (QMdiSubWindow* window : windows) {
        if (scn::WorkspaceView* view = m_subWindows.value(window)) {
            views.append(view);
        }
    }
    return views;
}

/// "None" and every channel of the scan list with a unit, in channel order.
QStringList GraphicSettingWidget::channelList() const
{
    QStringList items{tr("无")};
    for (auto it = g_scanChannels.cbegin(); it != g_scanChannels.cend(); ++it) {
        if (!it.value().isEmpty()) {
            items.append(scn::channelText(it.key(), it.value()));
        }
    }
    return items;
}
