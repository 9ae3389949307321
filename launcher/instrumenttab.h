#pragma once

#include "launcher/instrumentchild.h"
#include "launcher/instrumentchoice.h"
#include "launcher/refusalprobe.h"
#include "launcher/runarchive.h"
#include "launcher/startpage.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class QStackedWidget;

namespace scnlauncher {

class EmbeddedWindow;
class EndedPage;
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
    /// What the tab is about: the identity, or the resource; empty on the start page.
    QString title() const;
    /// The instrument's identity; empty while there is none.
    QString identity() const;

signals:
    void titleChanged();
    /// The child has ended.
    void idle();

private:
    void startSimulator();
    void startChild(const QString& resource);
    void embed(qulonglong handle, const QColor& color);
    void showStatus();
    QString logPath() const;
    void dropSimulator();
    void leaveSimulator();
    void finish(const ChildEnd& end);
    QString endSentence(const ChildEnd& end) const;
    void chooseOther();
    void leaveForChoice();
    void report(const QString& sentence, const QStringList& lastWords);

    const Workshop& m_workshop;
    InstrumentChoice m_choice;
    QString m_resource;
    QString m_folder; ///< where the data is
    std::unique_ptr<SimulatorProcess> m_simulator;
    std::unique_ptr<InstrumentChild> m_child;
    RefusalProbe m_probe;
    RunArchive m_archive;
    OpenFailure m_failure = OpenFailure::None;
    bool m_returnsToChoice = false;
    QTimer m_ticks;
    QStackedWidget* m_pages;
    StartPage* m_startPage;
    StartingPage* m_startingPage;
    EndedPage* m_endedPage;
    StateLine* m_stateLine;
    QPointer<EmbeddedWindow> m_embedded;
};

} // namespace scnlauncher
