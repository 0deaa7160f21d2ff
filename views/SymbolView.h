#pragma once

#include <QWidget>

#include "views/Symbols.h"
#include "views/Theme.h"

namespace quibel {

/// A symbol in the accent colour, for the eye only.
class SymbolView : public QWidget {
 public:
  SymbolView(Symbol symbol, QSize size, QWidget* parent = nullptr)
      : QWidget(parent), symbol_(symbol) {
    setFixedSize(size);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    paintSymbol(painter, symbol_, rect(), colors(palette()).accent);
  }

 private:
  Symbol symbol_;
};

}  // namespace quibel
