#pragma once

#include <QList>
#include <QString>

namespace quibel {

enum class WindowButton { minimise, maximise, close };

/// The buttons on each side of a window's top, from left to right.
struct ButtonLayout {
  QList<WindowButton> left;
  QList<WindowButton> right{WindowButton::minimise, WindowButton::maximise, WindowButton::close};

  friend bool operator==(const ButtonLayout&, const ButtonLayout&) = default;
};

/// The layout that a desktop writes as "close:minimize,maximize"; what else it may name has
/// no place here. Without a colon, which no desktop leaves out, the usual layout.
ButtonLayout buttonLayout(const QString& setting);

}  // namespace quibel
