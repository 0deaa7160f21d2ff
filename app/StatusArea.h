#pragma once

#include <QWidget>

class QStackedLayout;

namespace quibel {

class TextLabel;
struct NamingText;

/// One line of the status area, with a spinner if it reports progress.
class StatusLine : public QWidget {
  Q_OBJECT

 public:
  enum class Kind { text, progress };

  explicit StatusLine(Kind kind);

  Kind kind() const { return kind_; }
  QString text() const;

  /// Assistive technology is told of a text that changes while the line shows, as it
  /// is of a line that appears.
  void showText(const NamingText& text);

 private:
  Kind kind_;
  TextLabel* label_;
};

/// The place below both screens: what goes on, or else guidance or a result. It is as
/// high as either, so that nothing moves when they change.
class StatusArea : public QWidget {
  Q_OBJECT

 public:
  explicit StatusArea(QWidget* parent = nullptr);

  void showProgress(const QString& text);
  void showStatus(const NamingText& text);

 private:
  void show(StatusLine* line, const NamingText& text);

  QStackedLayout* lines_;
  StatusLine* progress_;
  StatusLine* status_;
  QWidget* nothing_;
};

}  // namespace quibel
