#include "app/ButtonLayout.h"

#include <QMap>
#include <QStringList>

namespace quibel {
namespace {

QList<WindowButton> buttonsOf(const QString& names) {
  static const QMap<QString, WindowButton> known{
      {QStringLiteral("minimize"), WindowButton::minimise},
      {QStringLiteral("maximize"), WindowButton::maximise},
      {QStringLiteral("close"), WindowButton::close}};
  QList<WindowButton> buttons;
  for (const auto& name : names.split(QLatin1Char(','))) {
    const auto button = known.constFind(name.trimmed());
    if (button != known.cend() && !buttons.contains(*button)) buttons.append(*button);
  }
  return buttons;
}

}  // namespace

ButtonLayout buttonLayout(const QString& setting) {
  const auto sides = setting.split(QLatin1Char(':'));
  if (sides.size() != 2) return {};
  return {buttonsOf(sides.front()), buttonsOf(sides.back())};
}

}  // namespace quibel
