#pragma once

#include <QColor>
#include <QRect>
#include <QString>
#include <QStringList>

/// A hand and an eye on an X display.
class XDisplay
{
public:
    /// Its name, e.g. ":7"; empty if it did not start.
    QString name() const { return m_name; }

    /// Moves the pointer to a point of the screen and clicks the left button.
    void click(int x, int y) const;
    /// Moves the pointer only.
    void movePointer(int x, int y) const;
    /// Presses or releases the left button at the pointer.
    void press() const;
    void release() const;

    /// Asks a window to close, as a window manager does. False if the request could not be sent.
    bool closeWindow(qulonglong window) const;

    /// The parent of a window: 0 for the screen itself and for a window that does not exist.
    qulonglong parentOf(qulonglong window) const;

    /// The visible window of a process besides that one: a list that it has opened. 0 if there is none.
    qulonglong otherWindowOf(qint64 process, qulonglong window) const;

    /// Where a window is on the screen; invalid if it does not exist.
    QRect placeOf(qulonglong window) const;

    /// The colour of a point of the screen; invalid if it could not be read.
    QColor colorAt(int x, int y) const;

    /// Runs xdotool on this display and returns its output.
    QString xdotool(const QStringList& arguments) const;

protected:
    XDisplay() = default;
    ~XDisplay() = default;
    XDisplay(const XDisplay&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;

    void setName(const QString& name) { m_name = name; }

private:
    QString m_name;
};
