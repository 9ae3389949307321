#pragma once

#include "app/buttonbarbuilder.h"
#include "app/channelform.h"
#include "app/loggingform.h"
#include "app/windowtiming.h"
#include "export/exportresult.h"

#include <QString>
#include <QStringList>
#include <QWidget>

#include <memory>

class CommFunc;
class CsvExportFromDBThread;
class CurveDataDB;
class CustomComboBox;
class CustomDialog;
class CustomMessageDialog;
class GraphicSettingWidget;
class InputReaderThread;
class LoadingView;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QScrollArea;
class QTabWidget;
class QTimer;
class QTreeWidgetItem;
class QVBoxLayout;
class ReadData;
class WindowLockManager;

namespace scn {
class GuiGate;
class LauncherOutput;
struct ChannelRow;
class ChannelEditor;
class ChannelTable;
class FourWirePartners;
class InstrumentLink;
class RunIndicator;
class RunStateMachine;
class ScanMarks;
class WindowDisplay;
} // namespace scn

/// The program's window. It owns the pages and the acquisition and input threads, connects the signals and has
/// the slots of every page. It is frameless, for the launcher to embed. Without an instrument at the start it
/// holds only the recovery overlay; the pages are built once the instrument answers.
///
/// All slots run on the GUI thread; they find out what is meant and leave the work to the classes of scn.
/// The sources are one file per page: mainwidget.cpp (composition, wiring, launcher channel),
/// mainwidget_channeltable.cpp (the ticks), mainwidget_channelrow.cpp (editing a channel),
/// mainwidget_loggingpage.cpp, mainwidget_runcontrol.cpp, mainwidget_export.cpp.
class MainWidget : public QWidget,
                   private scn::ChannelForm,
                   private scn::LoggingForm,
                   private scn::ButtonBarForm
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MainWidget)

public:
    /// Connects to g_resourceName and reads the instrument's state back; blocks meanwhile.
    explicit MainWidget(QWidget* parent, const scn::WindowTiming& timing = {});

    /// Stops its threads, waiting up to 5000 ms for each before terminating it. Sends nothing: a scan goes
    /// on in the instrument. A running export is asked to stop first, gets 6000 ms, and leaves no file.
    ~MainWidget() override;

public slots:
    // Run control; queued by name on helper threads.
    void stopLoadingView();
    void scanFunc();

protected:
    /// Tells the launcher the window's native handle and background colour.
    void showEvent(QShowEvent* event) override;

private slots:
    // Launcher channel
    void handleInput(const QString& line);
    void replyToParent(const QString& line);

    // Channel table
    void onItemChanged(QTreeWidgetItem* item, int column);
    void onModuleItemChanged(QTreeWidgetItem* item, int column);
    void onChannelItemChanged(QTreeWidgetItem* item, int column);
    void onTitleEdited(const QString& text);
    void onMeasTypeChanged(int index);
    void onRangeTypeChanged(int index);
    void onResTypeChanged(int index);
    void onMoreButton1Clicked();
    void onZoomStateChanged(bool state);
    void onFuncTypeChanged(int index);
    void onModificationEdited(const QString& text);
    void onLowerEdited(const QString& text);
    void onUnitChanged(int index);
    void onMoreButton2Clicked();
    void recvAdvancedSettingChanged(int channelNum);

    // Recording page
    void recvUsbSlot(bool isChecked);
    void recvStartSlot(bool isChecked);
    void recvAlarmComboSlot(int index);
    void recvIntervalSlot(bool isChecked);
    void recvIntervalPickerSlot(double value);
    void recvStopSlot(bool isChecked);
    void recvStopCountSlot(int count);

    // Run control
    void recvStartButtonSlot();
    void recvDataClearFinished();
    void recvStopScan();
    void recvElapsedTimeSlot();
    void recvLockScreenSlot();
    void recvUseInstSlot();
    void recvLoadBtnSlot();

    // Export
    void recvExportButtonSlot();
    void recvBrowseButtonSlot();
    void recvExportFileButtonSlot();

private:
    // Composition
    void bringUp();
    void buildInterface();
    void buildSettingsPages();
    void placeWorkPages(QTreeWidget* tree);
    void makeConnections();
    void silenceControls();
    void showMessage(const QString& text, int kind);
    void listenToLauncher();

    // Channel table
    void connectRows();
    void connectRow(const scn::ChannelRow& row);
    int senderChannel() const;
    void refuseUnless(bool isNumber);
    void tellWorkspace();

    // Run control
    void endScan();
    void stopElapsedTimer();
    void startElapsedTimer();
    void showReconnectView();
    bool bringUpLate();

    // Export
    void buildExportDialog();
    void showExportOutcome(ExportResult result, const QStringList& files);

    const scn::WindowTiming m_timing;
    std::shared_ptr<scn::GuiGate> m_gate;
    std::unique_ptr<scn::LauncherOutput> m_launcherOutput;
    const std::unique_ptr<scn::ChannelTable> m_table;
    const std::unique_ptr<scn::ScanMarks> m_marks;
    const std::unique_ptr<scn::FourWirePartners> m_partners;
    const std::unique_ptr<scn::WindowDisplay> m_display;
    const std::unique_ptr<scn::InstrumentLink> m_link;
    const std::unique_ptr<scn::ChannelEditor> m_editor;
    const std::unique_ptr<scn::RunStateMachine> m_runState;
    const std::unique_ptr<scn::RunIndicator> m_indicator;

    CommFunc* m_commFunc = nullptr;
    CustomMessageDialog* m_messageDialog = nullptr;
    ReadData* m_readData = nullptr;
    InputReaderThread* m_inputReader = nullptr;
    LoadingView* m_startupView = nullptr;
    LoadingView* m_reconnectView = nullptr;
    WindowLockManager* m_lockManager = nullptr;
    QVBoxLayout* m_mainLayout = nullptr;
    QWidget* m_contentWidget = nullptr;
    QHBoxLayout* m_contentLayout = nullptr;
    QTabWidget* m_settingsTabs = nullptr;
    QTabWidget* m_workTabs = nullptr;
    QScrollArea* m_instrumentPage = nullptr;
    QWidget* m_instrumentPageContent = nullptr;
    QScrollArea* m_loggingPage = nullptr;
    QWidget* m_loggingPageContent = nullptr;
    GraphicSettingWidget* m_graphicSetting = nullptr;
    CurveDataDB* m_curveStore = nullptr;
    std::unique_ptr<QTimer> m_elapsedTimer;

    // Export
    CustomDialog* m_exportDialog = nullptr;
    CustomComboBox* m_separatorBox = nullptr;
    QLabel* m_exportDirectoryLabel = nullptr;
    QLineEdit* m_exportNameEdit = nullptr;
    LoadingView* m_exportView = nullptr;
    CsvExportFromDBThread* m_exportThread = nullptr; ///< the export that runs
};
