#pragma once

#include <QLabel>

#include "views/DisplayText.h"
#include "views/Theme.h"

namespace quibel {

/// One line of literal text in a text style, primary or secondary. It follows
/// the desktop's font and palette.
class TextLabel : public QLabel {
  Q_OBJECT

 public:
  enum class Role { primary, secondary };
  enum class Feature {
    none,
    monospacedDigits,  ///< every digit as wide as the widest, so that times stand still
    elided,            ///< cut where there is no room, whole in a tooltip
  };

  explicit TextLabel(TextStyle style, Role role = Role::primary, Feature feature = Feature::none,
                     const QString& text = {}, QWidget* parent = nullptr);

  /// Shows `text`; nothing happens where it is shown already.
  void showText(const QString& text) { showText(NamingText{text, {}}); }

  /// The same with a file name at its end, which alone is cut: in its middle, so
  /// that its extension stays.
  void showText(const NamingText& naming);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  QString fitting() const;
  int advance(const QString& text) const;
  int digitWidth() const;
  void drawMonospaced(QPainter& painter, QPoint baseline) const;

  TextStyle style_;
  Role role_;
  Feature feature_;
  QString name_;
};

}  // namespace quibel
