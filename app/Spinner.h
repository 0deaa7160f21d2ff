#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace quibel {

/// Turns while it is visible, unless motion is to be reduced: something goes on whose end is not
/// known.
class Spinner : public QWidget {
  Q_OBJECT

 public:
  static constexpr int side = 16;

  explicit Spinner(QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  QBasicTimer timer_;
  int step_ = 0;
};

}  // namespace quibel
