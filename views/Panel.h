#pragma once

#include <QPainter>
#include <QWidget>

namespace quibel {

inline constexpr double panelCornerRadius = 22;

/// The rounded ground of a screen: the control background at `opacity`, filling `panel`.
void paintPanel(QPainter& painter, const QWidget& panel, double opacity);

}  // namespace quibel
