#include "Tessarune/platform/qt-desktop/X11Desktop.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

namespace tessarune::X11Desktop {

namespace {

constexpr std::uint32_t maximumAtoms = 1024; // far more than any window manager lists

template <typename Reply>
using OwnedReply = std::unique_ptr<Reply, decltype(&std::free)>;

/// The application's connection to the X server; null on another platform.
xcb_connection_t* connection() {
    auto* const native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

/// 0 if the server does not know the name.
xcb_atom_t atom(xcb_connection_t* x, std::string_view name) {
    constexpr std::uint8_t onlyIfItExists = 1;
    const auto request =
        xcb_intern_atom(x, onlyIfItExists, static_cast<std::uint16_t>(name.size()), name.data());
    const OwnedReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(x, request, nullptr),
                                                    std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_window_t rootOf(xcb_connection_t* x) {
    return xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
}

constexpr std::string_view traySelection = "_NET_SYSTEM_TRAY_S0";

} // namespace

bool canBeReached() {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> tried(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    return xcb_connection_has_error(tried.get()) == 0;
}

bool keepsWindowsAbove() {
    xcb_connection_t* const x = connection();
    if (!x)
        return false;
    const xcb_atom_t supported = atom(x, "_NET_SUPPORTED");
    const xcb_atom_t above = atom(x, "_NET_WM_STATE_ABOVE");
    constexpr std::uint8_t keepsProperty = 0;
    const auto request =
        xcb_get_property(x, keepsProperty, rootOf(x), supported, XCB_ATOM_ATOM, 0, maximumAtoms);
    const OwnedReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(x, request, nullptr),
                                                     std::free);
    constexpr std::uint8_t bitsPerAtom = 32;
    if (!reply || reply->format != bitsPerAtom)
        return false;
    const std::span listed(static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get())),
                           reply->value_len);
    return above != XCB_ATOM_NONE && std::ranges::find(listed, above) != listed.end();
}

bool hasTray() {
    xcb_connection_t* const x = connection();
    if (!x)
        return false;
    const auto request = xcb_get_selection_owner(x, atom(x, traySelection));
    const OwnedReply<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(x, request, nullptr), std::free);
    return reply && reply->owner != XCB_WINDOW_NONE;
}

bool announcesTray(const QByteArray& kind, const void* message) {
    constexpr std::uint8_t sentByClient = 0x80; // a flag in `response_type`
    if (kind != "xcb_generic_event_t")
        return false;
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~sentByClient) != XCB_CLIENT_MESSAGE)
        return false;
    xcb_connection_t* const x = connection();
    if (!x)
        return false;
    const auto* const client = static_cast<const xcb_client_message_event_t*>(message);
    return client->window == rootOf(x) && client->type == atom(x, "MANAGER") &&
           client->data.data32[1] == atom(x, traySelection);
}

} // namespace tessarune::X11Desktop
