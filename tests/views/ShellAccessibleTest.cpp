#include <QAccessible>
#include <functional>

#include "tests/views/ContentFixture.h"

namespace quibel {
namespace {

void visit(QAccessibleInterface* element,
           const std::function<void(QAccessibleInterface*)>& visitor) {
  visitor(element);
  for (int i = 0; i < element->childCount(); ++i) visit(element->child(i), visitor);
}

/// What assistive technology finds in the window.
class ShellAccessible : public ContentFixture {
 protected:
  QAccessibleInterface* root() { return QAccessible::queryAccessibleInterface(&view); }

  /// The showing element of that role, or null.
  QAccessibleInterface* showing(QAccessible::Role role) {
    QAccessibleInterface* found = nullptr;
    visit(root(), [&](QAccessibleInterface* element) {
      if (element->role() == role && !element->state().invisible) found = element;
    });
    return found;
  }

  std::vector<std::string> buttons() {
    std::vector<std::string> names;
    visit(root(), [&](QAccessibleInterface* element) {
      if (element->role() == QAccessible::Button && !element->state().invisible)
        names.push_back(element->text(QAccessible::Name).toStdString());
    });
    return names;
  }
};

using Strings = std::vector<std::string>;

TEST_F(ShellAccessible, WhatWasReadOutKeepsItsTextForAReaderThatIsLate) {
  model->load(platform::FileURL("/falta.mp3"));
  turn();
  auto* const progress = showing(QAccessible::Notification);
  ASSERT_NE(progress, nullptr);
  machine.settle();
  turn();
  EXPECT_EQ(showing(QAccessible::Notification), nullptr);
  EXPECT_EQ(progress->text(QAccessible::Name).toStdString(), "Analizando audio…");
}

TEST_F(ShellAccessible, ProgressIsBusyAndAResultIsNot) {
  model->load(addSong("/a.mp3", 30));
  turn();
  EXPECT_TRUE(showing(QAccessible::Notification)->state().busy);
  machine.settle();
  turn();
  EXPECT_FALSE(showing(QAccessible::Notification)->state().busy);
}

TEST_F(ShellAccessible, TheAlertIsAModalAlertWithItsMessage) {
  ASSERT_NE(failToLoad("Otra cosa."), nullptr);
  auto* const element = showing(QAccessible::AlertMessage);
  ASSERT_NE(element, nullptr);
  EXPECT_TRUE(element->state().modal);
  EXPECT_EQ(element->text(QAccessible::Name).toStdString(), "Quibel");
  EXPECT_EQ(element->text(QAccessible::Description).toStdString(),
            "No se ha podido abrir el audio. Otra cosa.");
}

TEST_F(ShellAccessible, WhileTheAlertShowsThereIsNothingElse) {
  load(90);
  turn();
  const auto before = buttons();
  EXPECT_EQ(before, (Strings{"Cambiar canción…", "Escuchar en bucle", "Crear tono .m4r…"}));
  auto* const slider =
      QAccessible::queryAccessibleInterface(handle("Inicio del fragmento"))->valueInterface();
  ASSERT_NE(failToLoad(), nullptr);
  EXPECT_EQ(buttons(), Strings{"Aceptar"});
  EXPECT_EQ(showing(QAccessible::Slider), nullptr);
  slider->setCurrentValue(20.0);
  EXPECT_EQ(model->start(), 0) << "nor can it be worked by who still knows of it";
  model->showAlertBinding().set(false);
  turn();
  EXPECT_EQ(buttons(), before);
}

TEST_F(ShellAccessible, TheScreensAreNoLayers) {
  visit(root(), [](QAccessibleInterface* element) {
    EXPECT_NE(element->role(), QAccessible::LayeredPane);
  });
}

}  // namespace
}  // namespace quibel
