#include "launcher/nativewindows.h"

#include <QCoreApplication>

#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>

namespace scnlauncher {
namespace {

/// What a request of the display returns, freed at its end.
template <class Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply>
ReplyPointer<Reply> owned(Reply* reply)
{
    return ReplyPointer<Reply>(reply, &std::free);
}

bool exists(xcb_connection_t* connection, xcb_window_t window)
{
    return owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window),
                                        nullptr)) != nullptr;
}

/// The process that a window names; 0 if it names none.
qint64 processOf(xcb_connection_t* connection, xcb_window_t window)
{
    constexpr char kProperty[] = "_NET_WM_PID";
    const auto atom = owned(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, std::strlen(kProperty), kProperty), nullptr));
    if (!atom) {
        return 0;
    }
    const auto property = owned(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, atom->atom, XCB_ATOM_CARDINAL, 0, 1),
        nullptr));
    if (!property || property->format != 32 || xcb_get_property_value_length(property.get()) < 4) {
        return 0;
    }
    return *static_cast<const uint32_t*>(xcb_get_property_value(property.get()));
}

/// A scale factor may round it up or down.
bool isNear(const xcb_get_geometry_reply_t& window, const QRect& place)
{
    return qAbs(window.x - place.x()) <= 1 && qAbs(window.y - place.y()) <= 1 &&
           qAbs(window.width - place.width()) <= 1 && qAbs(window.height - place.height()) <= 1;
}

QString text(const char* source)
{
    return QCoreApplication::translate("NativeWindows", source);
}

} // namespace

NativeWindows::NativeWindows()
    : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect)
{
}

NativeWindows::~NativeWindows() = default;

bool NativeWindows::isConnected() const
{
    return xcb_connection_has_error(m_connection.get()) == 0;
}

QString NativeWindows::objection(qulonglong handle, qint64 processId) const
{
    const auto window = static_cast<xcb_window_t>(handle);
    if (!isConnected() || window != handle || !exists(m_connection.get(), window)) {
        return text("程序报告的窗口 %1 不存在。").arg(handle);
    }
    const qint64 owner = processOf(m_connection.get(), window);
    if (owner != processId) {
        return text("程序报告的窗口 %1 属于进程 %2，而不是所启动的程序（进程 %3）。")
            .arg(QString::number(handle), QString::number(owner), QString::number(processId));
    }
    return {};
}

void NativeWindows::tellPlace(qulonglong handle) const
{
    if (!isConnected()) {
        return;
    }
    const auto window = static_cast<xcb_window_t>(handle);
    const auto size = owned(xcb_get_geometry_reply(
        m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr));
    if (!size) {
        return;
    }
    const auto place = owned(xcb_translate_coordinates_reply(
        m_connection.get(), xcb_translate_coordinates(m_connection.get(), window, size->root, 0, 0),
        nullptr));
    if (!place) {
        return;
    }
    xcb_configure_notify_event_t event{};
    event.response_type = XCB_CONFIGURE_NOTIFY;
    event.event = window;
    event.window = window;
    event.x = place->dst_x;
    event.y = place->dst_y;
    event.width = size->width;
    event.height = size->height;
    xcb_send_event(m_connection.get(), 0, event.window, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(m_connection.get());
}

bool NativeWindows::putBack(qulonglong handle, qulonglong parent, const QRect& place) const
{
    if (!isConnected()) {
        return false;
    }
    xcb_connection_t* const connection = m_connection.get();
    const auto window = static_cast<xcb_window_t>(handle);
    const auto tree =
        owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    const auto now =
        owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    if (!tree || !now || (tree->parent == parent && isNear(*now, place))) {
        return false;
    }
    if (tree->parent != parent) {
        xcb_reparent_window(connection, window, static_cast<xcb_window_t>(parent),
                            static_cast<int16_t>(place.x()), static_cast<int16_t>(place.y()));
    }
    const std::array<uint32_t, 4> values = {
        static_cast<uint32_t>(place.x()), static_cast<uint32_t>(place.y()),
        static_cast<uint32_t>(place.width()), static_cast<uint32_t>(place.height())};
    xcb_configure_window(connection, window,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    xcb_map_window(connection, window);
    xcb_flush(connection);
    return true;
}

bool NativeWindows::isFocusIn(const QByteArray& eventType, const void* message, qulonglong handle)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_focus_in_event_t*>(message);
    constexpr int kSentByClient = 0x80;
    return (event->response_type & ~kSentByClient) == XCB_FOCUS_IN && event->event == handle &&
           event->detail != XCB_NOTIFY_DETAIL_POINTER;
}

bool NativeWindows::giveKeyboard(qulonglong handle) const
{
    if (!isConnected()) {
        return false;
    }
    // When the window goes, its parent gets the keyboard back.
    const auto request =
        xcb_set_input_focus_checked(m_connection.get(), XCB_INPUT_FOCUS_PARENT,
                                    static_cast<xcb_window_t>(handle), XCB_CURRENT_TIME);
    return owned(xcb_request_check(m_connection.get(), request)) == nullptr;
}

} // namespace scnlauncher
