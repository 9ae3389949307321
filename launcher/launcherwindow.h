#pragma once

#include "launcher/instrumenttab.h"

#include <QList>
#include <QWidget>

class QTabWidget;

namespace scnlauncher {

/// The launcher's window: a tab for each instrument.
class LauncherWindow : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LauncherWindow)

public:
    explicit LauncherWindow(const Workshop& workshop);

    /// Opens an instrument in the current tab.
    void open(const InstrumentChoice& choice);

    /// Ends all children without a question, and closes.
    void endAll();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    InstrumentTab* tabAt(int index) const;
    QList<InstrumentTab*> tabs() const;
    InstrumentTab* addTab();
    void closeTab(int index);
    void removeTab(InstrumentTab* tab);
    void updateTitles();
    void restorePlace();
    bool isBusy() const;
    void onIdle(InstrumentTab* tab);

    const Workshop& m_workshop;
    QTabWidget* m_tabs;
    QList<InstrumentTab*> m_leaving; ///< to be removed when their children have ended
    bool m_isClosing = false;
};

} // namespace scnlauncher
