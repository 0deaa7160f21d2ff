#pragma once

#include <QString>
#include <memory>

class QWindow;

namespace quibel::desktop {

/// A window that another program may put one of its own over, as long as this lives.
class ExportedWindow {
 public:
  /// `window` has been shown.
  explicit ExportedWindow(QWindow& window);
  ~ExportedWindow();

  /// Its name as portals take it, "x11:…" or "wayland:…"; empty where it has none.
  QString identifier() const;

 private:
  class WaylandHandle;

  QString identifier_;
  std::unique_ptr<WaylandHandle> handle_;
};

}  // namespace quibel::desktop
