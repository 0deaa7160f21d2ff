#pragma once

#include <QVBoxLayout>

#include "views/TextLabel.h"

namespace quibel {

/// A column of one time of the fragment under its title, with a note below
/// where there is one.
class ReadOut : public QWidget {
  Q_OBJECT

 public:
  ReadOut(const QString& title, TextStyle timeStyle, QWidget* parent = nullptr);

  void setNote(const QString& note);

  /// Shows a time in seconds.
  void showTime(double seconds);

 private:
  TextLabel* time_;
};

}  // namespace quibel
