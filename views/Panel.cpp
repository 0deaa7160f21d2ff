#include "views/Panel.h"

#include "views/Theme.h"

namespace quibel {

void paintPanel(QPainter& painter, const QWidget& panel, double opacity) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(withOpacity(colors(panel.palette()).controlBackground, opacity));
  painter.drawRoundedRect(panel.rect(), panelCornerRadius, panelCornerRadius);
}

}  // namespace quibel
