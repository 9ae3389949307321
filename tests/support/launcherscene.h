#pragma once

#include "launcher/launcherwindow.h"
#include "launcher/nativewindows.h"
#include "support/virtualdisplay.h"

#include <QApplication>
#include <QTemporaryDir>

#include <memory>

/// An application of the test on a display of its own, where real clicks reach its windows.
class DisplayApplication
{
public:
    DisplayApplication(int& argc, char** argv);

    static const VirtualDisplay& display();

private:
    VirtualDisplay m_display;
    std::unique_ptr<QApplication> m_application;
};

/// The launcher's window in the test's process, its children in theirs, and a hand on the screen.
class LauncherScene
{
public:
    /// The children are this program's. The options are further ones of the simulator.
    explicit LauncherScene(const QString& program, const QStringList& simulatorOptions = {});
    ~LauncherScene();
    LauncherScene(const LauncherScene&) = delete;
    LauncherScene& operator=(const LauncherScene&) = delete;

    scnlauncher::LauncherWindow& window() { return *m_window; }
    scnlauncher::InstrumentTab* currentTab() const;
    QString home() const { return m_home.path(); }

    /// Clicks into the middle of a widget.
    void click(const QWidget* widget) const;
    /// Clicks the visible button of that name in the current tab, or in the whole window.
    void clickButton(const char* name) const;
    /// Clicks a tab of the window.
    void clickTab(int index) const;
    /// The visible label's text in the current tab; empty if there is none.
    QString label(const char* name) const;
    /// Types a resource on the start page and opens it.
    void openByHand(const QString& resource) const;
    /// The part of the current tab that shows the child; null if none is shown.
    QWidget* embedded() const;
    /// Waits until the current tab shows its child.
    bool waitForEmbedding() const;

    /// A resource for the fake child that no other test holds at the same time.
    static QString own(const char* kind);

    /// The processes of this test with that name, except those that have ended.
    static QList<qint64> children(const QString& name);

private:
    QTemporaryDir m_home;
    scnlauncher::NativeWindows m_windows;
    scnlauncher::LauncherSettings m_settings;
    std::unique_ptr<scnlauncher::Workshop> m_workshop;
    std::unique_ptr<scnlauncher::LauncherWindow> m_window;
};
