#pragma once

#include "launcher/endedpage.h"
#include "launcher/instrumentchild.h"
#include "launcher/instrumentchoice.h"
#include "launcher/refusalprobe.h"
#include "launcher/runarchive.h"
#include "launcher/startpage.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

class QStackedWidget;

namespace scnlauncher {

class EmbeddedWindow;
class NativeWindows;
class SimulatorProcess;
class StartingPage;
class StateLine;

/// What all tabs share.
struct Workshop
{
    QString program;
    QString simulator;
    QStringList simulatorArguments;
    InstrumentSources sources;
    const LauncherSettings& settings;
    const NativeWindows& windows;
};

/// One instrument: first the choice, then the child that works with it, at last how that ended.
class InstrumentTab : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InstrumentTab)

public:
    InstrumentTab(const Workshop& workshop, QWidget* parent);
    ~InstrumentTab() override;

    void open(const InstrumentChoice& choice);

    /// Ends the child; idle() follows. Does nothing without one.
    void end();

    bool isBusy() const { return m_child != nullptr; }
    bool isScanning() const;
    bool isSimulated() const { return m_choice.isSimulated; }
    /// What the tab is about: the identity, or the resource, also after its end; empty on the start page.
    QString title() const { return m_title; }
    /// What a user who looks elsewhere should know, in a word; empty if all is well.
    QString trouble() const;
    /// The instrument's identity; empty while there is none.
    QString identity() const;

signals:
    /// The title or the trouble.
    void titleChanged();
    /// The child has ended.
    void idle();

protected:
    void showEvent(QShowEvent* event) override;

private:
    static constexpr int kTickMs = 1000;

    void startSimulator();
    void startChild(const QString& resource);
    void embed(qulonglong handle, const QColor& color);
    void showStatus();
    void dropSimulator();
    void leaveSimulator();
    void finish(const ChildEnd& end);
    QString subject() const;
    void tellNews();
    void chooseOther();
    void leaveForChoice();
    void report(const EndReport& report);

    const Workshop& m_workshop;
    InstrumentChoice m_choice;
    QString m_title;
    QString m_resource;
    QString m_folder; ///< where the data is
    std::unique_ptr<SimulatorProcess> m_simulator;
    std::unique_ptr<InstrumentChild> m_child;
    RefusalProbe m_probe;
    RunArchive m_archive;
    OpenFailure m_failure = OpenFailure::None;
    bool m_returnsToChoice = false;
    bool m_hasRun = false;
    std::optional<EndReport> m_simulatorEnd; ///< to be told once its child has ended too
    QString m_seenCritical;                  ///< the last critical line that was in view
    QString m_toldTrouble;
    QTimer m_ticks;
    QStackedWidget* m_pages;
    StartPage* m_startPage;
    StartingPage* m_startingPage;
    EndedPage* m_endedPage;
    StateLine* m_stateLine;
    QPointer<EmbeddedWindow> m_embedded;
};

} // namespace scnlauncher
