#pragma once

#include <QDialog>

namespace quibel {

class MessageText;

/// The window's one alert: the application's name, a message and a button that
/// ends it. Escape, Enter and closing it end it too.
class AlertDialog : public QDialog {
  Q_OBJECT

 public:
  explicit AlertDialog(QWidget* parent);

  /// Shows `message` as it is, over the whole window, without waiting for the answer.
  /// While the alert shows, it keeps its place.
  void showMessage(const QString& message);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  MessageText* message_;
};

}  // namespace quibel
