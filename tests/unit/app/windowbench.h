#pragma once

#include "acquisition/readdatatiming.h"
#include "app/channelrow.h"
#include "app/windowtiming.h"
#include "skippedwaits.h"
#include "support/fakeinstrument.h"

#include <QAbstractButton>
#include <QStringList>
#include <QTreeWidget>

#include <memory>

class AdvancedSetting;
class CustomComboBox;
class CustomLineEdit;
class CustomMessageDialog;
class ImageButton;
class LoadingView;
class MainWidget;
class QLabel;

/// The program's window on a scripted instrument, and its controls as the user sees them. Each bench
/// begins with the shared state of a fresh process.
class WindowBench
{
public:
    /// The acquisition thread cannot be told to stop in its first second: a test that has no use for
    /// it has it ended by force in that sleep, and nothing but the window's own lines on the wire.
    enum Acquisition { AcquisitionEnded, AcquisitionRuns };

    WindowBench();
    ~WindowBench();
    WindowBench(const WindowBench&) = delete;
    WindowBench& operator=(const WindowBench&) = delete;

    FakeInstrument& instrument() { return m_instrument; }

    /// The waits of the store, such as that of each new curve.
    SkippedWaits& storeWaits() { return m_storeWaits; }

    /// How long the window and the acquisition that runs wait: mostly less than in the program. For
    /// the next window.
    scn::WindowTiming windowTiming;
    scn::ReadDataTiming acquisitionTiming;

    /// Makes the window. The lines of the start-up are kept for startUpLines(); the instrument's
    /// record begins anew.
    MainWidget& open(Acquisition acquisition = AcquisitionEnded);
    void close();

    /// Ends the acquisition thread by force.
    static void endAcquisition();

    /// Lets the helpers come to their end, and the window take in what they have posted.
    static void settle();

    MainWidget& window() const { return *m_window; }
    const QStringList& startUpLines() const { return m_startUpLines; }

    /// Calls a slot of the window by its name.
    void call(const char* slot) const;

    /// Has the window read one channel back, as after a change in one of its panels.
    void readBack(int channel) const;

    /// The instrument is taken away and found again by the recovery button.
    void loseAndRecover() const;

    QTreeWidget* tree() const;
    QTreeWidgetItem* module(int slot) const;
    QTreeWidgetItem* item(int channel) const;
    void tick(int channel, bool on = true) const;
    QList<int> tickedChannels() const;

    template <typename Control>
    Control* cell(int channel, scn::ChannelColumn column) const
    {
        return qobject_cast<Control*>(tree()->itemWidget(item(channel), column));
    }
    CustomComboBox* box(int channel, scn::ChannelColumn column) const;
    CustomLineEdit* edit(int channel, scn::ChannelColumn column) const;
    static QStringList itemsOf(const CustomComboBox* box);

    /// The panel behind a "..." button, opened by a click on it.
    AdvancedSetting* openPanel(int channel, scn::ChannelColumn column) const;

    /// The chosen text in a group of a panel: of its list or of its buttons.
    static QString choiceOf(const AdvancedSetting* panel, const QString& groupTitle);

    /// The number in the spin box of a group of a panel.
    static double numberOf(const AdvancedSetting* panel, const QString& groupTitle);

    /// The button of the forms with this text; in the group with this title where one is given.
    QAbstractButton* button(const QString& text, const QString& group = QString()) const;

    ImageButton* startButton() const;
    ImageButton* exportButton() const;
    QLabel* runningLabel() const;
    LoadingView* startupView() const;
    LoadingView* reconnectView() const;

    /// The recovery button of the overlay.
    void clickRecovery() const;

    /// The text of the message on show, empty when there is none.
    QString message() const;
    CustomMessageDialog* messageDialog() const;

private:
    SkippedWaits m_storeWaits;
    FakeInstrument m_instrument;
    std::unique_ptr<MainWidget> m_window;
    QStringList m_startUpLines;
};

/// The lines that follow the options in every read-back of a channel.
QStringList scalingQueries(int channel);

/// The lines of the whole read-back of a channel that measures DC volts in the automatic range.
QStringList voltageReadBack(int channel);
