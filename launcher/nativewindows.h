#pragma once

#include <QRect>
#include <QString>

#include <memory>

struct xcb_connection_t;

namespace scnlauncher {

/// The windows of other processes on the display, by their handles, on a connection of its own.
class NativeWindows
{
public:
    NativeWindows();
    ~NativeWindows();
    NativeWindows(const NativeWindows&) = delete;
    NativeWindows& operator=(const NativeWindows&) = delete;

    /// False if there is no display.
    bool isConnected() const;

    /// Why a window must not be embedded as that of this process; empty if it may.
    QString objection(qulonglong handle, qint64 processId) const;

    /// Tells an embedded window where it is on the screen: it hears nothing when only its parent moves, and its
    /// popups would open at the old place. In pixels of the screen, which a scale factor makes others than Qt's.
    void tellPlace(qulonglong handle) const;

    /// Puts an embedded window back to its place in its parent, in pixels of the screen, if it is elsewhere or
    /// of another size. A window manager that had framed it may take it out after it was embedded: that of Weston
    /// does. True if it was elsewhere.
    bool putBack(qulonglong handle, qulonglong parent, const QRect& place) const;

    /// Gives a window the keyboard; false if it cannot have it yet, because it does not show.
    bool giveKeyboard(qulonglong handle) const;

    /// Whether a native event gives a window of this process the keyboard. Qt does not tell when it comes back
    /// from a window inside.
    static bool isFocusIn(const QByteArray& eventType, const void* message, qulonglong handle);

private:
    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> m_connection;
};

} // namespace scnlauncher
