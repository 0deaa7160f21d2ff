#pragma once

#include <QLabel>

namespace quibel {

/// Literal text over as many lines as it needs, centred. Words that are longer
/// than a line, as paths are, are broken.
class MessageText : public QLabel {
  Q_OBJECT

 public:
  explicit MessageText(QWidget* parent = nullptr);

  QSize sizeHint() const override { return {width(), heightForWidth(width())}; }
  QSize minimumSizeHint() const override { return {0, heightForWidth(width())}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quibel
