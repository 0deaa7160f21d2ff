#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>

#include "tests/views/ContentFixture.h"
#include "views/ActionButton.h"
#include "views/Theme.h"

namespace quibel {
namespace {

/// The sheet over a loaded song.
class Alert : public ContentFixture {
 protected:
  void SetUp() override {
    ContentFixture::SetUp();
    load(90);
    turn();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
  }

  // In the view's coordinates.
  static QPoint middleOf(const AlertSheet& sheet) { return sheet.cardGeometry().center(); }
  static QPoint onTheVeil() { return {40, 300}; }

  /// Drags a file to a place of the window, as the system does, and lets go.
  bool dropAt(QPoint place, const char* file) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromUtf8(file))});
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(view.windowHandle(), &enter);
    QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QCoreApplication::sendEvent(view.windowHandle(), &drop);
    turn();
    return enter.isAccepted() && drop.isAccepted();
  }

  /// Sets the application's font and tells everyone, as an application that runs does.
  static void setFont(const QFont& font) {
    QApplication::setFont(font);
    for (auto* widget : QApplication::allWidgets()) {
      QEvent changed(QEvent::ApplicationFontChange);
      QCoreApplication::sendEvent(widget, &changed);
    }
  }

  QWidget* focused() { return view.window()->focusWidget(); }
};

TEST_F(Alert, ShowsTheModelsMessageLiterally) {
  auto* const sheet = failToLoad("<b>x&amp;y");
  ASSERT_NE(sheet, nullptr);
  auto* const message = label(*sheet, "No se ha podido abrir el audio. <b>x&amp;y");
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->textFormat(), Qt::PlainText);
  EXPECT_NE(label(*sheet, "Quibel"), nullptr);
  EXPECT_EQ(sheet->findChildren<QAbstractButton*>().size(), 1);
  EXPECT_NE(button(*sheet, "Aceptar"), nullptr);
}

TEST_F(Alert, IsACardInTheMiddleOfAVeilOverTheWholeWindow) {
  const auto before = view.grab().toImage();
  auto* const sheet = failToLoad();
  ASSERT_NE(sheet, nullptr);
  EXPECT_FALSE(sheet->isWindow());
  view.resize(1100, 800);
  turn();
  EXPECT_EQ(placeIn(view, sheet), view.rect());
  EXPECT_LE((middleOf(*sheet) - view.rect().center()).manhattanLength(), 2);
  const auto after = view.grab().toImage();
  for (const auto& corner : {QPoint(3, 3), QPoint(3, 500)}) {
    EXPECT_LT(after.pixelColor(corner).lightness(), before.pixelColor(corner).lightness() - 20);
  }
  const auto card = sheet->cardGeometry();
  EXPECT_GT(after.pixelColor(card.topLeft() + QPoint(100, 10)).lightness(), 200);
  EXPECT_LT(after.pixelColor(card.topLeft()).lightness(), 200) << "its corners are rounded";
}

TEST_F(Alert, AcceptingLowersItAndKeepsItsText) {
  auto* const sheet = failToLoad();
  const auto text = model->alertText();
  button(*sheet, "Aceptar")->click();
  EXPECT_FALSE(model->showAlert());
  EXPECT_EQ(model->alertText(), text);
  EXPECT_EQ(alert(), nullptr);
}

TEST_F(Alert, EnterSpaceAndEscapeAcceptIt) {
  for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape}) {
    ASSERT_NE(failToLoad(), nullptr);
    QTest::keyClick(view.windowHandle(), key);
    EXPECT_FALSE(model->showAlert()) << key;
    EXPECT_EQ(alert(), nullptr);
  }
}

TEST_F(Alert, GoesWhenTheModelLowersIt) {
  ASSERT_NE(failToLoad(), nullptr);
  model->showAlertBinding().set(false);
  EXPECT_EQ(alert(), nullptr);
}

TEST_F(Alert, ASecondFailureChangesItsMessage) {
  ASSERT_NE(failToLoad("Una cosa."), nullptr);
  auto* const sheet = failToLoad("Otra cosa.");
  EXPECT_NE(label(*sheet, "No se ha podido abrir el audio. Otra cosa."), nullptr);
}

TEST_F(Alert, AMessageOfOneLongWordKeepsTheCardNarrow) {
  auto* const sheet = failToLoad(std::string(400, 'w').c_str());
  EXPECT_LT(sheet->cardGeometry().width(), 450);
  EXPECT_GT(sheet->cardGeometry().height(), 250);
}

TEST_F(Alert, AVeryLongMessageWidensTheCardAndLeavesItInTheWindow) {
  auto* const sheet = failToLoad(std::string(1000, 'w').c_str());
  EXPECT_TRUE(view.rect().contains(sheet->cardGeometry()));
  EXPECT_GT(sheet->cardGeometry().width(), 450);
  auto* const message = sheet->findChildren<QLabel*>().last();
  EXPECT_GE(message->height(), message->heightForWidth(message->width()));
}

TEST_F(Alert, TheCardGrowsWithTheFont) {
  const auto* const sheet = failToLoad("Una frase que ocupa más de una línea de la tarjeta.");
  const auto before = sheet->cardGeometry();
  const auto usual = QApplication::font();
  auto large = usual;
  large.setPixelSize(QFontInfo(usual).pixelSize() * 8 / 5);
  setFont(large);
  for (int depth = 0; depth < 5; ++depth) turn();
  const auto after = sheet->cardGeometry();
  const auto button = placeIn(*sheet, view.findChild<AlertSheet*>()->findChild<ActionButton*>());
  EXPECT_TRUE(after.contains(button));
  setFont(usual);
  EXPECT_GT(after.width(), 1.3 * before.width());
  EXPECT_GT(after.height(), before.height());
}

TEST_F(Alert, TheVeilAndTheCardTakeADropAndTheAlertStays) {
  auto* const sheet = failToLoad();
  ASSERT_NE(sheet, nullptr);
  addSong("/velo.mp3", 20);
  addSong("/tarjeta.mp3", 30);
  for (const auto& [place, file] :
       {std::pair(onTheVeil(), "/velo.mp3"), std::pair(middleOf(*sheet), "/tarjeta.mp3")}) {
    EXPECT_TRUE(dropAt(place, file));
    EXPECT_EQ(model->audioURL()->path(), file);
    machine.settle();
    EXPECT_EQ(alert(), sheet);
    EXPECT_TRUE(model->showAlert());
  }
  EXPECT_NEAR(model->duration(), 30, 1e-6);
}

TEST_F(Alert, NothingBelowItCanBePressed) {
  ASSERT_NE(failToLoad(), nullptr);
  for (const char* title : {"Cambiar canción…", "Escuchar en bucle", "Crear tono .m4r…"}) {
    auto* const below = find(title);
    ASSERT_NE(below, nullptr) << title;
    QTest::mouseClick(view.windowHandle(), Qt::LeftButton, {}, placeIn(view, below).center());
    below->click();  // as assistive technology would
  }
  const auto start = model->start();
  auto* const below = handle("Inicio del fragmento");
  const auto place = placeIn(view, below).center() + QPoint(5, 0);
  QTest::mousePress(view.windowHandle(), Qt::LeftButton, {}, place);
  QTest::mouseMove(view.windowHandle(), place + QPoint(100, 0));
  QTest::mouseRelease(view.windowHandle(), Qt::LeftButton, {}, place + QPoint(100, 0));
  EXPECT_EQ(model->start(), start);
  EXPECT_FALSE(model->isPlaying());
  EXPECT_FALSE(machine.openPanel);
  EXPECT_FALSE(machine.savePanel);
}

TEST_F(Alert, TheFocusStaysInIt) {
  auto* const sheet = failToLoad();
  auto* const accept = button(*sheet, "Aceptar");
  EXPECT_EQ(focused(), accept);
  for (const auto key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Down}) {
    QTest::keyClick(view.windowHandle(), key);
    EXPECT_EQ(focused(), accept) << key;
  }
  find("Escuchar en bucle")->setFocus();
  EXPECT_EQ(focused(), accept);
}

TEST_F(Alert, TheFocusGoesBackToWhereItWasAsItWasShown) {
  for (const bool shown : {false, true}) {
    auto* const loop = static_cast<ActionButton*>(find("Escuchar en bucle"));
    loop->clearFocus();
    loop->setFocus(shown ? Qt::TabFocusReason : Qt::MouseFocusReason);
    auto* const sheet = failToLoad();
    EXPECT_EQ(sheet->acceptButton().isKeyboardFocused(), shown);
    model->showAlertBinding().set(false);
    turn();
    EXPECT_EQ(focused(), loop);
    EXPECT_EQ(loop->isKeyboardFocused(), shown);
  }
}

TEST_F(Alert, WhatItCoversIsAsBeforeOnceItHasGone) {
  ASSERT_NE(failToLoad(), nullptr);
  model->showAlertBinding().set(false);
  turn();
  for (const char* title : {"Cambiar canción…", "Escuchar en bucle", "Crear tono .m4r…"}) {
    EXPECT_TRUE(find(title)->isEnabled()) << title;
  }
}

TEST_F(Alert, ShowingItAsksForNoLayoutOverAndOver) {
  ASSERT_NE(failToLoad(std::string(2000, 'w').c_str()), nullptr);
  for (int depth = 0; depth < 10; ++depth) turn();
  class Layouts : public QObject {
   public:
    bool eventFilter(QObject*, QEvent* event) override {
      count += event->type() == QEvent::LayoutRequest;
      return false;
    }
    int count = 0;
  } layouts;
  alert()->installEventFilter(&layouts);
  for (int depth = 0; depth < 10; ++depth) turn();
  EXPECT_EQ(layouts.count, 0);
}

}  // namespace
}  // namespace quibel
