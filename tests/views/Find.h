#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QWidget>
#include <algorithm>

#include "views/SymbolView.h"

namespace quibel {

/// The button of this title below `root` that is not hidden, or null.
inline QAbstractButton* button(const QWidget& root, const char* title) {
  for (auto* candidate : root.findChildren<QAbstractButton*>()) {
    if (candidate->text() == QString::fromUtf8(title) && !candidate->isHidden()) return candidate;
  }
  return nullptr;
}

/// The label of this text below `root`, or null.
inline QLabel* label(const QWidget& root, const char* text) {
  for (auto* candidate : root.findChildren<QLabel*>()) {
    if (candidate->text() == QString::fromUtf8(text)) return candidate;
  }
  return nullptr;
}

/// The texts of all labels below `root`, from top to bottom and from left to right.
inline QStringList texts(const QWidget& root) {
  auto labels = root.findChildren<QLabel*>();
  std::ranges::sort(labels, {}, [&root](const QLabel* l) {
    const auto at = l->mapTo(&root, QPoint());
    return std::pair(at.y(), at.x());
  });
  QStringList result;
  for (const auto* found : labels) result.append(found->text());
  return result;
}

/// The first picture of a symbol below `root`, or null.
inline QWidget* symbolView(const QWidget& root) {
  for (auto* candidate : root.findChildren<QWidget*>()) {
    if (dynamic_cast<SymbolView*>(candidate)) return candidate;
  }
  return nullptr;
}

/// Where `widget` lies in `root`.
inline QRect placeIn(const QWidget& root, const QWidget* widget) {
  return {widget->mapTo(&root, QPoint()), widget->size()};
}

}  // namespace quibel
