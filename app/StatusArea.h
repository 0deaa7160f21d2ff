#pragma once

#include <QStackedWidget>

namespace quibel {

class TextLabel;

/// The line below both screens: what goes on, or else guidance or a result. It
/// is as high as either, so that nothing moves when they change.
class StatusArea : public QStackedWidget {
  Q_OBJECT

 public:
  explicit StatusArea(QWidget* parent = nullptr);

  void showProgress(const QString& text);
  void showStatus(const QString& text);

 private:
  TextLabel* progress_;
  TextLabel* status_;
};

}  // namespace quibel
