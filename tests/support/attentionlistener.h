#pragma once

#include <QList>
#include <QString>

#include <xcb/xcb.h>

#include <memory>

/// Hears what windows ask of a window manager from now on, on a display without one.
class AttentionListener
{
public:
    explicit AttentionListener(const QString& display);

    /// Whether that window has asked for attention so far.
    bool hasAsked(qulonglong window);

private:
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
    QList<qulonglong> m_windows; ///< that have asked
    xcb_atom_t m_state = XCB_ATOM_NONE;
    xcb_atom_t m_attention = XCB_ATOM_NONE;
};
