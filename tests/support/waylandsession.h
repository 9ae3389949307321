#pragma once

#include "support/xdisplay.h"

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A Wayland session without a screen, with an X display beside it.
class WaylandSession : public XDisplay
{
public:
    /// Without weston and Xwayland its name stays empty.
    WaylandSession();
    ~WaylandSession();

    /// For `WAYLAND_DISPLAY`; a path, so that it needs no `XDG_RUNTIME_DIR`.
    QString socket() const;

    /// What the session has reported.
    QString log() const;

private:
    const QTemporaryDir m_directory;
    QProcess m_compositor;
};
