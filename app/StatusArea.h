#pragma once

#include <QStackedWidget>

namespace quibel {

class TextLabel;
struct NamingText;

/// The line below both screens: what goes on, or else guidance or a result. It
/// is as high as either, so that nothing moves when they change. Assistive
/// technology is told of every text as it comes.
class StatusArea : public QStackedWidget {
  Q_OBJECT

 public:
  explicit StatusArea(QWidget* parent = nullptr);

  void showProgress(const QString& text);
  void showStatus(const NamingText& text);

 private:
  void announce(const QString& text);

  TextLabel* progress_;
  TextLabel* status_;
};

}  // namespace quibel
