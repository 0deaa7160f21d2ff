#pragma once

#include <QWidget>

namespace quibel {

class ActionButton;
class MessageText;

/// The window's one alert, a sheet inside it: a card with the application's name, a
/// message and a button, on a veil over its parent. Enter and Escape press the button
/// too. A press on the sheet's ground and a drop on it are its parent's.
class AlertSheet : public QWidget {
  Q_OBJECT

 public:
  explicit AlertSheet(QWidget* parent);

  QString message() const;
  /// `message` is shown as it is.
  void setMessage(const QString& message);

  ActionButton& acceptButton() { return *accept_; }
  QRect cardGeometry() const { return card_->geometry(); }

 Q_SIGNALS:
  void accepted();

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* parent, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void placeCard();

  QWidget* card_;
  MessageText* message_;
  ActionButton* accept_;
};

}  // namespace quibel
