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
using Answer = std::unique_ptr<Reply, decltype(&std::free)>;

xcb_connection_t* server() {
    auto* const native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

/// 0 if the server does not know the name.
xcb_atom_t atom(xcb_connection_t* server, std::string_view name) {
    const auto request =
        xcb_intern_atom(server, 1, static_cast<std::uint16_t>(name.size()), name.data());
    const Answer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(server, request, nullptr),
                                                std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace

bool canBeReached() {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> tried(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    return xcb_connection_has_error(tried.get()) == 0;
}

bool keepsWindowsAbove() {
    xcb_connection_t* const x = server();
    if (!x)
        return false;
    const xcb_atom_t supported = atom(x, "_NET_SUPPORTED");
    const xcb_atom_t above = atom(x, "_NET_WM_STATE_ABOVE");
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    const auto request = xcb_get_property(x, 0, root, supported, XCB_ATOM_ATOM, 0, maximumAtoms);
    const Answer<xcb_get_property_reply_t> reply(xcb_get_property_reply(x, request, nullptr),
                                                 std::free);
    if (!reply || reply->format != 32)
        return false;
    const std::span listed(static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get())),
                           reply->value_len);
    return above != XCB_ATOM_NONE && std::ranges::find(listed, above) != listed.end();
}

bool hasTray() {
    xcb_connection_t* const x = server();
    if (!x)
        return false;
    const auto request = xcb_get_selection_owner(x, atom(x, "_NET_SYSTEM_TRAY_S0"));
    const Answer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(x, request, nullptr), std::free);
    return reply && reply->owner != XCB_WINDOW_NONE;
}

} // namespace tessarune::X11Desktop
