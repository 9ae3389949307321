#pragma once

#include "acquisition/measurementdata.h"

#include <QList>
#include <QMap>
#include <QStringList>
#include <QWidget>

#include <chrono>
#include <memory>

class QMdiArea;
class QMdiSubWindow;
class QPushButton;
class SideBar;

namespace scn {
class BatchIntake;
class WorkspaceView;
} // namespace scn

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

    /// Stores at once what is left of the last batch. Whatever ends a run, clears the store or reads it as a
    /// whole calls this first: batches are stored in slices.
    void storeReadings();

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
    QPushButton* addToolButton(const QString& iconPath, const QString& toolTip);
    void buildArea();
    template <typename Content>
    void openWindow(const QString& iconPath, const QString& titleText);
    void forgetWindowWhenDestroyed(QMdiSubWindow* window);
    QList<scn::WorkspaceView*> views() const;
    QStringList channelList() const;
    void showBatch(const MeasurementData& last);

    SideBar* m_sideBar = nullptr;
    QMdiArea* m_mdiArea = nullptr;
    QMap<QMdiSubWindow*, scn::WorkspaceView*> m_subWindows;
    int m_windowCounter = 0;
    const std::unique_ptr<scn::BatchIntake> m_intake;
};
