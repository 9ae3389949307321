#pragma once

#include "support/xdisplay.h"

#include <QProcess>
#include <QSize>

/// A virtual X display.
class VirtualDisplay : public XDisplay
{
public:
    /// With the server's own resolution, or with one in dots per inch.
    explicit VirtualDisplay(int resolution = 0, const QSize& size = QSize(1600, 1000));
    ~VirtualDisplay();

private:
    QProcess m_server;
};
