#include <memory>

#include "app/AlertSheet.h"
#include "app/ContentView.h"
#include "app/Window.h"
#include "app/WindowControls.h"
#include "tests/views/EditorFixture.h"
#include "tests/views/Find.h"
#include "tests/views/Pixels.h"

namespace quibel {
namespace {

/// Which symbol stands where, outside the two screens.
class SymbolPlaces : public EditorFixture {
 protected:
  SymbolPlaces() {
    platform::Platform::setStandard(&machine);
    window = std::make_unique<Window>();
    window->show();
    turn();
  }

  /// Whether the window control of this name paints just this symbol.
  bool controlShows(const char* name, Symbol symbol) {
    const auto palette = colors(window->palette());
    for (auto* control : window->findChildren<WindowControl*>()) {
      if (control->accessibleName() != QString::fromUtf8(name)) continue;
      const QRectF middle = QRectF(control->rect()).adjusted(4, 4, -4, -4);
      return Picture(*control, 2, palette.windowBackground)
          .shows(symbol, middle, window->isActiveWindow() ? palette.text : palette.secondary);
    }
    return false;
  }

  std::unique_ptr<Window> window;
};

TEST_F(SymbolPlaces, TheWindowsControls) {
  EXPECT_TRUE(controlShows("Minimizar", Symbol::windowMinimise));
  EXPECT_TRUE(controlShows("Maximizar", Symbol::windowMaximise));
  EXPECT_TRUE(controlShows("Cerrar", Symbol::windowClose));
  window->showMaximized();
  turn();
  EXPECT_TRUE(controlShows("Restaurar", Symbol::windowRestore));
}

TEST_F(SymbolPlaces, TheAlert) {
  window->content().editor().load(platform::FileURL("/falta.mp3"));
  machine.settle();
  turn();
  auto* const alert = window->findChild<AlertSheet*>();
  ASSERT_NE(alert, nullptr);
  auto* const symbol = symbolView(*alert);
  ASSERT_NE(symbol, nullptr);
  const auto palette = colors(alert->palette());
  EXPECT_TRUE(Picture(*alert, 2, palette.windowBackground)
                  .shows(Symbol::waveformBadgePlus, placeIn(*alert, symbol), palette.accent));
}

}  // namespace
}  // namespace quibel
