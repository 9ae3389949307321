#pragma once

#include "acquisition/measurementdata.h"

#include <QElapsedTimer>
#include <QList>
#include <QMap>
#include <QStringList>
#include <QWidget>

#include <chrono>

class QMdiArea;
class QMdiSubWindow;
class QPushButton;
class SideBar;

namespace scn {
class WorkspaceView;
}

/// The page of live views: a side bar whose two buttons open charts and data grids in an MDI area. It
/// receives every batch of readings, feeds the shared series and notifies each open window. GUI thread;
/// batches arrive from the acquisition thread as queued calls.
class GraphicSettingWidget : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GraphicSettingWidget)

public:
    /// How often a series that the store has refused is offered again.
    static constexpr std::chrono::milliseconds kRegistrationInterval{5000};

    explicit GraphicSettingWidget(
        QWidget* parent = nullptr,
        std::chrono::milliseconds registrationInterval = kRegistrationInterval);
    ~GraphicSettingWidget() override;

    /// Offers the current scan list's channels in every window and empties every chart. Must run before
    /// g_curveSeries is rebuilt.
    void rebuildChannelLists();

private slots:
    void recvGraphicBtnSlots();
    void recvDataNetworkBtnSlots();
    void onSubWindowActivated(QMdiSubWindow* subWindow);
    void refreshCurveSeriesDataSlot(QList<MeasurementData> dataList);

private:
    void buildSideBar();
    QPushButton* addToolButton(const QString& iconPath);
    void buildArea();
    template <typename Content>
    void openWindow(const QString& iconPath, const QString& titleText);
    void forgetWindowWhenDestroyed(QMdiSubWindow* window);
    QList<scn::WorkspaceView*> views() const;
    QStringList channelList() const;
    void registerSeriesAgain();

    const std::chrono::milliseconds m_registrationInterval;
    SideBar* m_sideBar = nullptr;
    QMdiArea* m_mdiArea = nullptr;
    QMap<QMdiSubWindow*, scn::WorkspaceView*> m_subWindows;
    int m_windowCounter = 0;
    QElapsedTimer m_sinceRegistration; ///< since the last attempt; invalid before the first
};
