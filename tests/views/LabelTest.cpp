#include <map>

#include "app/StatusArea.h"
#include "tests/views/ContentFixture.h"
#include "tests/views/Pixels.h"

namespace quibel {
namespace {

enum class Role { primary, secondary };

struct Look {
  TextStyle style;
  Role role = Role::primary;
};

/// How each text looks; every text that shows must be among them.
class Labels : public ContentFixture {
 protected:
  static void expectLooks(const QWidget& root, const std::map<std::string, Look>& looks) {
    std::size_t found = 0;
    for (auto* label : root.findChildren<QLabel*>()) {
      const auto text = label->text().toStdString();
      if (!label->isVisible() || text.empty() || label->window() != root.window()) continue;
      ++found;
      const auto look = looks.find(text);
      if (look == looks.end()) {
        ADD_FAILURE() << "unknown: " << text;
        continue;
      }
      expectFont(*label, font(look->second.style));
      expectColor(*label, look->second.role);
    }
    EXPECT_EQ(found, looks.size());
  }

 private:
  static void expectFont(const QLabel& label, const QFont& expected) {
    const auto text = label.text().toStdString();
    EXPECT_EQ(label.font().pixelSize(), expected.pixelSize()) << text;
    EXPECT_EQ(label.font().weight(), expected.weight()) << text;
    EXPECT_EQ(label.font().families().join(u',').toStdString(),
              expected.families().join(u',').toStdString())
        << text;
  }

  static void expectColor(QLabel& label, Role role) {
    const auto palette = colors(label.palette());
    // So large that every stroke covers whole pixels.
    const Picture seen(label, 8, palette.windowBackground);
    EXPECT_ALIKE(seen.inkIn(label.rect()), role == Role::primary ? palette.text : palette.secondary)
        << label.text().toStdString();
  }
};

const std::map<std::string, Look> header{
    {"Quibel", {TextStyle::largeTitle}},
    {"Tu canción favorita, convertida en tono para iPhone", {TextStyle::body, Role::secondary}},
};

std::map<std::string, Look> withHeader(std::map<std::string, Look> looks) {
  looks.insert(header.begin(), header.end());
  return looks;
}

TEST_F(Labels, OfTheWelcomeScreen) {
  expectLooks(view, withHeader({
                        {"Arrastra aquí un archivo de audio", {TextStyle::title2}},
                        {"MP3, M4A, WAV, AIFF y otros formatos compatibles con macOS",
                         {TextStyle::body, Role::secondary}},
                    }));
}

TEST_F(Labels, OfTheWorkspace) {
  load(90);
  model->startBinding().set(10);
  model->endBinding().set(35);
  layOut();
  expectLooks(view, withHeader({
                        {"canción.mp3", {TextStyle::headline}},
                        {"01:30.0", {TextStyle::body, Role::secondary}},
                        {"INICIO", {TextStyle::caption2Bold, Role::secondary}},
                        {"00:10.0", {TextStyle::title3}},
                        {"DURACIÓN", {TextStyle::caption2Bold, Role::secondary}},
                        {"00:25.0", {TextStyle::title3Bold}},
                        {"Máximo compatible: 40 s", {TextStyle::caption, Role::secondary}},
                        {"FINAL", {TextStyle::caption2Bold, Role::secondary}},
                        {"00:35.0", {TextStyle::title3}},
                        {"Mueve los tiradores verde y naranja para escoger el fragmento.",
                         {TextStyle::callout, Role::secondary}},
                    }));
}

TEST_F(Labels, OfTheProgress) {
  auto* const status = view.findChild<StatusArea*>();
  load(90);
  startExport();
  layOut();
  expectLooks(*status, {{"Creando tono…", {TextStyle::body}}});
}

TEST_F(Labels, OfTheAlert) {
  model->load(platform::FileURL("/falta.mp3"));
  machine.settle();
  ASSERT_NE(alert(), nullptr);
  expectLooks(*alert(), {{"Quibel", {TextStyle::headline}},
                         {"No se ha podido abrir el audio. No existe.", {TextStyle::body}}});
}

}  // namespace
}  // namespace quibel
