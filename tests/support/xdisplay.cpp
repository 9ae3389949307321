#include "support/xdisplay.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace {

constexpr int kToolWaitMs = 20000;

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name)
{
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.constData());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

} // namespace

QString XDisplay::xdotool(const QStringList& arguments) const
{
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), m_name);
    tool.setProcessEnvironment(environment);
    tool.start(QStringLiteral("xdotool"), arguments);
    if (!tool.waitForFinished(kToolWaitMs)) {
        return {};
    }
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

void XDisplay::movePointer(int x, int y) const
{
    xdotool({QStringLiteral("mousemove"), QString::number(x), QString::number(y)});
}

void XDisplay::press() const
{
    xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
}

void XDisplay::release() const
{
    xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
}

void XDisplay::click(int x, int y) const
{
    movePointer(x, y);
    press();
    release();
}

bool XDisplay::closeWindow(qulonglong window) const
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(m_name.toLatin1().constData(), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) {
        return false;
    }
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = static_cast<xcb_window_t>(window);
    event.type = atom(connection.get(), "WM_PROTOCOLS");
    event.data.data32[0] = atom(connection.get(), "WM_DELETE_WINDOW");
    const auto cookie =
        xcb_send_event_checked(connection.get(), 0, event.window, XCB_EVENT_MASK_NO_EVENT,
                               reinterpret_cast<const char*>(&event));
    // Waits until the server has processed it: it discards unread requests of a client that has
    // gone.
    const std::unique_ptr<xcb_generic_error_t, decltype(&std::free)> error(
        xcb_request_check(connection.get(), cookie), &std::free);
    return !error;
}

qulonglong XDisplay::parentOf(qulonglong window) const
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(m_name.toLatin1().constData(), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) {
        return 0;
    }
    const auto cookie = xcb_query_tree(connection.get(), static_cast<xcb_window_t>(window));
    const std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> reply(
        xcb_query_tree_reply(connection.get(), cookie, nullptr), &std::free);
    return reply && reply->parent != reply->root ? reply->parent : 0;
}

qulonglong XDisplay::otherWindowOf(qint64 process, qulonglong window) const
{
    const QStringList windows = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                         QStringLiteral("--pid"), QString::number(process)})
                                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& each : windows) {
        if (each.toULongLong() != window) {
            return each.toULongLong();
        }
    }
    return 0;
}

QRect XDisplay::placeOf(qulonglong window) const
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(m_name.toLatin1().constData(), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) {
        return {};
    }
    const auto handle = static_cast<xcb_window_t>(window);
    const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> size(
        xcb_get_geometry_reply(connection.get(), xcb_get_geometry(connection.get(), handle),
                               nullptr),
        &std::free);
    if (!size) {
        return {};
    }
    const std::unique_ptr<xcb_translate_coordinates_reply_t, decltype(&std::free)> place(
        xcb_translate_coordinates_reply(
            connection.get(), xcb_translate_coordinates(connection.get(), handle, size->root, 0, 0),
            nullptr),
        &std::free);
    return place ? QRect(place->dst_x, place->dst_y, size->width, size->height) : QRect();
}

QColor XDisplay::colorAt(int x, int y) const
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(m_name.toLatin1().constData(), nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) {
        return {};
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const auto cookie =
        xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<int16_t>(x),
                      static_cast<int16_t>(y), 1, 1, ~uint32_t(0));
    const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
        xcb_get_image_reply(connection.get(), cookie, nullptr), &std::free);
    if (!reply || xcb_get_image_data_length(reply.get()) < 3) {
        return {};
    }
    // 24 bits deep: blue, green, red.
    const uint8_t* const pixel = xcb_get_image_data(reply.get());
    return QColor(pixel[2], pixel[1], pixel[0]);
}
