#pragma once

#include <QWidget>
#include <memory>

#include "model/AudioEditorModel.h"

namespace quibel {

class ActionButton;

/// The row above both screens: the application's name and, once there is a
/// song, the button that changes it.
class Header : public QWidget {
  Q_OBJECT

 public:
  explicit Header(std::shared_ptr<AudioEditorModel> editor, QWidget* parent = nullptr);

  void refresh();

 private:
  std::shared_ptr<AudioEditorModel> editor_;
  ActionButton* change_;
};

}  // namespace quibel
