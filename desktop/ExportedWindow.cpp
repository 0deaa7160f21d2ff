#include "desktop/ExportedWindow.h"

#include <QGuiApplication>
#include <QWindow>
#include <string_view>

#include <qpa/qplatformnativeinterface.h>
#include <wayland-client.h>

#include "xdg-foreign-v1.h"
#include "xdg-foreign-v2.h"

namespace quibel::desktop {
/// A toplevel surface's handle of xdg-foreign. Events of its own queue are read while it is
/// made and not after: the compositor sends just the one.
class ExportedWindow::WaylandHandle {
  template <auto destroy>
  struct Destroy {
    template <class Object>
    void operator()(Object* object) const {
      destroy(object);
    }
  };

  template <class Object, auto destroy>
  using Owned = std::unique_ptr<Object, Destroy<destroy>>;

 public:
  WaylandHandle(wl_display& display, wl_surface& surface)
      : queue_(wl_display_create_queue(&display)) {
    const Owned<wl_display, wl_proxy_wrapper_destroy> wrapper(
        static_cast<wl_display*>(wl_proxy_create_wrapper(&display)));
    if (!queue_ || !wrapper) return;
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper.get()), queue_.get());

    const Owned<wl_registry, wl_registry_destroy> registry(wl_display_get_registry(wrapper.get()));
    static constexpr wl_registry_listener onGlobal{.global = bind, .global_remove = ignoreRemoval};
    wl_registry_add_listener(registry.get(), &onGlobal, this);
    if (wl_display_roundtrip_queue(&display, queue_.get()) < 0) return;

    static constexpr zxdg_exported_v1_listener onHandle1{.handle = keep<zxdg_exported_v1>};
    static constexpr zxdg_exported_v2_listener onHandle2{.handle = keep<zxdg_exported_v2>};
    if (exporter2_) {
      exported2_.reset(zxdg_exporter_v2_export_toplevel(exporter2_.get(), &surface));
      zxdg_exported_v2_add_listener(exported2_.get(), &onHandle2, this);
    } else if (exporter1_) {
      exported1_.reset(zxdg_exporter_v1_export(exporter1_.get(), &surface));
      zxdg_exported_v1_add_listener(exported1_.get(), &onHandle1, this);
    }
    // Without an answer there is no name.
    static_cast<void>(wl_display_roundtrip_queue(&display, queue_.get()));
  }

  const QString& name() const { return name_; }

 private:
  static void bind(void* self, wl_registry* registry, std::uint32_t name, const char* interface,
                   std::uint32_t) {
    auto& handle = *static_cast<WaylandHandle*>(self);
    const auto made = [&](const wl_interface& wanted) {
      return std::string_view(interface) == wanted.name
                 ? wl_registry_bind(registry, name, &wanted, 1)
                 : nullptr;
    };
    if (auto* const exporter = made(zxdg_exporter_v1_interface))
      handle.exporter1_.reset(static_cast<zxdg_exporter_v1*>(exporter));
    if (auto* const exporter = made(zxdg_exporter_v2_interface))
      handle.exporter2_.reset(static_cast<zxdg_exporter_v2*>(exporter));
  }
  static void ignoreRemoval(void*, wl_registry*, std::uint32_t) {}
  template <class Exported>
  static void keep(void* self, Exported*, const char* handle) {
    static_cast<WaylandHandle*>(self)->name_ = QString::fromUtf8(handle);
  }

  // In this order, as the queue outlives what it belongs to.
  Owned<wl_event_queue, wl_event_queue_destroy> queue_;
  Owned<zxdg_exporter_v1, zxdg_exporter_v1_destroy> exporter1_;
  Owned<zxdg_exporter_v2, zxdg_exporter_v2_destroy> exporter2_;
  Owned<zxdg_exported_v1, zxdg_exported_v1_destroy> exported1_;
  Owned<zxdg_exported_v2, zxdg_exported_v2_destroy> exported2_;
  QString name_;
};

ExportedWindow::ExportedWindow(QWindow& window) {
  if (QGuiApplication::platformName() == QLatin1String("xcb")) {
    identifier_ = QStringLiteral("x11:%1").arg(window.winId(), 0, 16);
    return;
  }
  if (QGuiApplication::platformName() != QLatin1String("wayland")) return;
  auto* const plugin = QGuiApplication::platformNativeInterface();
  auto* const display =
      static_cast<wl_display*>(plugin->nativeResourceForIntegration("wl_display"));
  auto* const surface =
      static_cast<wl_surface*>(plugin->nativeResourceForWindow("surface", &window));
  if (!display || !surface) return;
  handle_ = std::make_unique<WaylandHandle>(*display, *surface);
  if (!handle_->name().isEmpty()) identifier_ = QStringLiteral("wayland:") + handle_->name();
}

ExportedWindow::~ExportedWindow() = default;

QString ExportedWindow::identifier() const { return identifier_; }

}  // namespace quibel::desktop
