#pragma once

#include <QWidget>
#include <memory>

#include "model/AudioEditorModel.h"

namespace quibel {

class ActionButton;

/// Invites to drop a song on the window or to choose one.
class WelcomeScreen : public QWidget {
  Q_OBJECT

 public:
  explicit WelcomeScreen(std::shared_ptr<AudioEditorModel> editor, QWidget* parent = nullptr);

  /// Whether a file is being dragged over the window: the border shows it.
  void setDropping(bool dropping);

  /// Gives its button the focus, as the keyboard would.
  void focusButton();

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ActionButton* choose_;
  bool dropping_ = false;
};

}  // namespace quibel
