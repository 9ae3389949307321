#pragma once

#include "launcher/launcherwindow.h"
#include "launcher/nativewindows.h"

#include <QPoint>
#include <QString>

#include <memory>

/// The launcher's window as large as the display. What it lists is the same on every machine; the programs
/// that it starts are real, and run beside the pictures' own.
class OpenLauncher
{
public:
    OpenLauncher();
    ~OpenLauncher();
    OpenLauncher(const OpenLauncher&) = delete;
    OpenLauncher& operator=(const OpenLauncher&) = delete;

    /// Types a resource into the field of the start page and opens it.
    void openByHand(const QString& resource) const;
    /// Opens what the start page has chosen, which is the simulated instrument at first.
    void clickOpen() const;
    /// Clicks a resource in the list of the start page.
    void choose(const QString& resource) const;
    /// Clicks the visible button of that name.
    void clickButton(const char* name) const;
    void clickTab(int index) const;
    void clickCloseOfTab(int index) const;
    /// The process of the program; 0 if there is none.
    static qint64 programProcess();
    /// The visible label of that name; empty if there is none.
    QString label(const char* name) const;

    /// The part that shows the program's window; null while there is none.
    QWidget* program() const;
    /// Clicks a point of the program's window; with a negative y, from its lower edge.
    void click(const QPoint& point) const;

private:
    scnlauncher::NativeWindows m_windows;
    scnlauncher::LauncherSettings m_settings;
    std::unique_ptr<scnlauncher::Workshop> m_workshop;
    std::unique_ptr<scnlauncher::LauncherWindow> m_window;
};
