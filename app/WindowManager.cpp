#include "app/WindowManager.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace quibel {
namespace {

struct Free {
  void operator()(void* reply) const { std::free(reply); }
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

}  // namespace

bool hasWindowManager() {
  const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
  if (!connection) return true;

  // Extended Window Manager Hints: every window manager names a window of its own here.
  constexpr std::string_view name = "_NET_SUPPORTING_WM_CHECK";
  const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
      connection, xcb_intern_atom(connection, 1, name.size(), name.data()), nullptr));
  if (!atom) return false;
  const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  const Owned<xcb_get_property_reply_t> property(xcb_get_property_reply(
      connection, xcb_get_property(connection, 0, root, atom->atom, XCB_ATOM_WINDOW, 0, 1),
      nullptr));
  return property && xcb_get_property_value_length(property.get()) > 0;
}

}  // namespace quibel
