#pragma once

#include "app/channelrow.h"
#include "support/simulatedinstrument.h"

#include <memory>

class AdvancedSetting;
class CustomComboBox;
class CustomMdiSubWindow;
class CustomMessageDialog;
class ImageButton;
class LoadingView;
class LockableDataCollectionView;
class MainWidget;
class QMdiArea;
class QScrollArea;
class QTabWidget;
class QTreeWidget;
class QWidget;
class SideBar;

/// The program's window on the simulated instrument, as large as the display.
class ProgramScene
{
public:
    /// Channels and functions of every kind: 101 to 122 and 201 to 220.
    explicit ProgramScene(const QStringList& options = {});
    ~ProgramScene();
    ProgramScene(const ProgramScene&) = delete;
    ProgramScene& operator=(const ProgramScene&) = delete;

    /// As the program does: after creating the window.
    static void wearTheProgramsStyle();

    SimulatedInstrument& instrument() { return *m_instrument; }
    MainWidget& window() const { return *m_window; }

    /// Shows the window, with the overlay of the start.
    void show();
    /// Shows the window and waits until the overlay has gone.
    void showReady();

    /// Clicks a tab of the left or of the right pane; from 0.
    void chooseForm(int page) const;
    void choosePage(int page) const;

    QScrollArea* form() const;
    QTreeWidget* tree() const;

    /// A control of a channel's row, scrolled into view.
    template <typename Control>
    Control* cell(int channel, scn::ChannelColumn column) const
    {
        return qobject_cast<Control*>(cellWidget(channel, column));
    }
    /// Clicks the check box of a channel.
    void tick(int channel) const;
    /// Chooses an entry of a list with mouse and keys.
    static void choose(CustomComboBox* box, const QString& entry);
    /// Opens the panel behind a "..." button.
    AdvancedSetting* openPanel(int channel, scn::ChannelColumn column) const;

    ImageButton* startButton() const;
    ImageButton* exportButton() const;
    /// Ticks the first channels and starts; returns when readings come.
    void run(int channels = 4) const;
    void stop() const;

    SideBar* sideBar() const;
    QMdiArea* area() const;
    /// Opens the workspace's page and its side bar.
    void openWorkspace() const;
    CustomMdiSubWindow* openChart() const { return openView(0); }
    CustomMdiSubWindow* openGrid() const { return openView(1); }

    CustomMessageDialog* message() const;
    LockableDataCollectionView* lock() const;
    LoadingView* recovery() const;

private:
    QWidget* cellWidget(int channel, scn::ChannelColumn column) const;
    CustomMdiSubWindow* openView(int button) const;
    void checkTab(QTabWidget* tabs, int page) const;

    std::unique_ptr<SimulatedInstrument> m_instrument;
    std::unique_ptr<MainWidget> m_window;
};
