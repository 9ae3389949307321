#pragma once

#include <QColor>
#include <QProcess>
#include <QString>

/// A virtual X display of its own, as long as this object lives.
class VirtualDisplay
{
public:
    VirtualDisplay();
    ~VirtualDisplay();

    /// Its name, ":7" for example; empty when it could not be started.
    QString name() const { return m_name; }

    /// Moves the pointer to a point of the screen and clicks the left button there.
    void click(int x, int y) const;
    /// Moves the pointer only.
    void movePointer(int x, int y) const;
    /// Presses or releases the left button where the pointer is.
    void press() const;
    void release() const;

    /// Asks a window to close, as a window manager does. False when that could not be sent.
    bool closeWindow(qulonglong window) const;

    /// The window that a window lies in: 0 for the screen itself and for a window that is not there.
    qulonglong parentOf(qulonglong window) const;

    /// The colour of a point of the screen; invalid when it could not be asked.
    QColor colorAt(int x, int y) const;

    /// Runs xdotool on this display and gives what it prints.
    QString xdotool(const QStringList& arguments) const;

private:
    QProcess m_server;
    QString m_name;
};
