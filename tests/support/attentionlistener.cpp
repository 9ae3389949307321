#include "support/attentionlistener.h"

#include <QByteArray>

#include <cstdlib>

namespace {

template <class Part>
using Freed = std::unique_ptr<Part, decltype(&std::free)>;

/// What a window asks for in _NET_WM_STATE.
constexpr uint32_t kAdd = 1;

xcb_atom_t atomNamed(xcb_connection_t* connection, const QByteArray& name)
{
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.constData());
    const Freed<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr),
                                               &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

} // namespace

AttentionListener::AttentionListener(const QString& display)
    : m_connection(xcb_connect(display.toLatin1().constData(), nullptr), &xcb_disconnect)
    , m_state(atomNamed(m_connection.get(), "_NET_WM_STATE"))
    , m_attention(atomNamed(m_connection.get(), "_NET_WM_STATE_DEMANDS_ATTENTION"))
{
    const xcb_window_t root =
        xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
    // Qt addresses its requests to those who select either.
    const uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    const auto cookie =
        xcb_change_window_attributes_checked(m_connection.get(), root, XCB_CW_EVENT_MASK, &events);
    const Freed<xcb_generic_error_t> error(xcb_request_check(m_connection.get(), cookie),
                                           &std::free);
}

bool AttentionListener::hasAsked(qulonglong window)
{
    for (;;) {
        const Freed<xcb_generic_event_t> event(xcb_poll_for_event(m_connection.get()), &std::free);
        if (!event) {
            return m_windows.contains(window);
        }
        if ((event->response_type & ~0x80) != XCB_CLIENT_MESSAGE) {
            continue;
        }
        const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
        const uint32_t* const data = message->data.data32;
        if (message->type == m_state && data[0] == kAdd &&
            (data[1] == m_attention || data[2] == m_attention)) {
            m_windows.append(message->window);
        }
    }
}
