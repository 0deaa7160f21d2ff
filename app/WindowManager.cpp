#include "app/WindowManager.h"

#include <QGuiApplication>
#include <QRegion>
#include <QWindow>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <qpa/qplatformnativeinterface.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace quibel {
namespace {

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

/// Null on Wayland.
xcb_connection_t* xConnection() {
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

xcb_window_t rootOf(xcb_connection_t* connection) {
  return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

xcb_atom_t atomOf(xcb_connection_t* connection, std::string_view name) {
  const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
      connection,
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
      nullptr));
  return atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
}

Owned<xcb_get_property_reply_t> rootProperty(xcb_connection_t* connection, std::string_view name,
                                             xcb_atom_t type) {
  constexpr std::uint32_t longest = 4096;  // in units of four bytes
  return Owned<xcb_get_property_reply_t>(
      xcb_get_property_reply(connection,
                             xcb_get_property(connection, 0, rootOf(connection),
                                              atomOf(connection, name), type, 0, longest),
                             nullptr));
}

bool hasCompositor(xcb_connection_t* connection) {
  // Inter-Client Communication Conventions: it owns this selection of the first screen.
  const auto atom = atomOf(connection, "_NET_WM_CM_S0");
  const Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      connection, xcb_get_selection_owner(connection, atom), nullptr));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

bool understandsShadows(xcb_connection_t* connection) {
  const auto supported = rootProperty(connection, "_NET_SUPPORTED", XCB_ATOM_ATOM);
  if (!supported || supported->format != 32) return false;
  const std::span atoms(static_cast<const xcb_atom_t*>(xcb_get_property_value(supported.get())),
                        supported->value_len);
  return std::ranges::find(atoms, atomOf(connection, "_GTK_FRAME_EXTENTS")) != atoms.end();
}

using SetMargins = void (*)(QWindow*, const QMargins&);

/// Qt's Wayland plugin offers no other way to tell a window's geometry from its surface.
SetMargins waylandSetMargins() {
  if (QGuiApplication::platformName() != QLatin1String("wayland")) return nullptr;
  auto* const plugin = QGuiApplication::platformNativeInterface();
  return reinterpret_cast<SetMargins>(
      reinterpret_cast<QFunctionPointer>(plugin->nativeResourceFunctionForWindow("setmargins")));
}

void declareShadowOnX(xcb_connection_t* connection, const QWindow& window, QMargins margins) {
  const auto id = static_cast<xcb_window_t>(window.winId());
  const double ratio = window.devicePixelRatio();
  margins *= ratio;
  const std::array<std::uint32_t, 4> extents{
      static_cast<std::uint32_t>(margins.left()), static_cast<std::uint32_t>(margins.right()),
      static_cast<std::uint32_t>(margins.top()), static_cast<std::uint32_t>(margins.bottom())};
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id,
                      atomOf(connection, "_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32,
                      extents.size(), extents.data());
  const QRect body = QRect(QPoint(), window.size() * ratio).marginsRemoved(margins);
  const xcb_rectangle_t input{
      static_cast<std::int16_t>(body.x()), static_cast<std::int16_t>(body.y()),
      static_cast<std::uint16_t>(body.width()), static_cast<std::uint16_t>(body.height())};
  xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                       id, 0, 0, 1, &input);
  xcb_flush(connection);
}

}  // namespace

bool hasWindowManager() {
  auto* const connection = xConnection();
  if (!connection) return true;
  // Extended Window Manager Hints: every window manager names a window of its own here.
  const auto property = rootProperty(connection, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW);
  return property && xcb_get_property_value_length(property.get()) > 0;
}

Frame supportedFrame() {
  if (auto* const connection = xConnection()) {
    if (!hasCompositor(connection)) return Frame::plain;
    return understandsShadows(connection) ? Frame::shadowed : Frame::rounded;
  }
  if (QGuiApplication::platformName() != QLatin1String("wayland")) return Frame::plain;
  return waylandSetMargins() ? Frame::shadowed : Frame::rounded;
}

void declareShadow(QWindow& window, const QMargins& margins, QSize minimum) {
  if (auto* const connection = xConnection()) {
    declareShadowOnX(connection, window, margins);
  } else if (const auto setMargins = waylandSetMargins()) {
    setMargins(&window, margins);
    // On Wayland, where the pointer is taken, and nothing else.
    window.setMask(QRect(QPoint(), window.size()).marginsRemoved(margins));
    // The compositor's smallest size is one of the geometry, but Qt gives it the surface's.
    window.setMinimumSize(minimum.shrunkBy(margins));
  }
}

}  // namespace quibel
