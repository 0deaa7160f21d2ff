// Pictures of the window in every state, light and dark, at one and two pixels a
// point, and with larger text, into the folder that is named on the command line.

#include <QApplication>
#include <QDebug>
#include <QDir>
#include <QEnterEvent>
#include <QEventLoop>
#include <QImage>
#include <QPainter>
#include <QTimer>
#include <cmath>
#include <numbers>

#include "app/ContentView.h"
#include "app/DesktopAppearance.h"
#include "app/Window.h"
#include "tests/support/FakePlatform.h"
#include "views/ActionButton.h"
#include "views/HandleView.h"
#include "views/WelcomeScreen.h"
#include "views/WorkspaceScreen.h"

namespace quibel {
namespace {

const platform::FileURL songURL("/música/Canción de otoño (en directo).mp3");

// A number between 0 and 1 for each `i`, the same in every run.
double noise(double i) {
  const double x = std::abs(std::sin(i * 12.9898) * 43758.5453);
  return x - std::floor(x);
}

// Three minutes with verses, a chorus and a beat, as many frames as an envelope of
// 900 values takes.
fake::Song song() {
  constexpr double seconds = 186.4;
  constexpr double rate = 2000;
  constexpr std::size_t framesInAValue = 400;
  std::vector<float> samples(static_cast<std::size_t>(seconds * rate));
  const auto length = static_cast<double>(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double t = static_cast<double>(i) / length;
    const std::size_t bucket = i / framesInAValue;
    const auto value = static_cast<double>(bucket);
    const double part = 0.55 + 0.35 * std::sin(t * 6 * std::numbers::pi - 1.2);
    const double fade = std::min({1.0, t * 14, (1 - t) * 9});
    const double beat = 0.6 + 0.4 * std::abs(std::sin(t * 340));
    samples[i] = static_cast<float>(part * fade * beat * (0.35 + 0.65 * noise(value)));
  }
  return {.sampleRate = rate, .channels = {std::move(samples)}};
}

/// The window on a machine of its own.
class Scene {
 public:
  Scene() {
    platform::Platform::setStandard(&machine);
    machine.songs[songURL.path().string()] = song();
    window = std::make_unique<Window>();
    window->show();
  }
  ~Scene() {
    window.reset();
    for (const auto& session : machine.sessions) session->abandon();
  }

  /// Gives a view the keyboard's focus.
  void focus(QWidget* view) {
    window->activateWindow();
    QCoreApplication::processEvents();
    view->setFocus(Qt::TabFocusReason);
  }

  AudioEditorModel& editor() { return window->content().editor(); }

  void load() {
    editor().load(songURL);
    machine.settle();
  }

  void loadUntilTheLightIsInTheMiddle() {
    editor().load(songURL);
    QEventLoop loop;
    QTimer::singleShot(800, &loop, &QEventLoop::quit);
    loop.exec();
  }

  void select(double start, double end) {
    load();
    editor().startBinding().set(start);
    editor().endBinding().set(end);
  }

  void startExport() {
    select(48.2, 79.6);
    machine.savePanelAnswer = platform::FileURL("/música/Canción de otoño.m4r");
    editor().export_();
  }

  QImage picture(double ratio) {
    // The posted refresh, then the layout that it asks for.
    for (int turn = 0; turn < 3; ++turn) QCoreApplication::processEvents();
    QImage image((QSizeF(window->size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    window->render(&image);
    return image;
  }

  fake::Platform machine;
  std::unique_ptr<Window> window;
};

struct State {
  const char* name;
  void (*reach)(Scene& scene);
};

constexpr State states[] = {
    {"welcome", [](Scene&) {}},
    {"drop", [](Scene& s) { s.window->findChild<WelcomeScreen*>()->setDropping(true); }},
    {"loading", [](Scene& s) { s.loadUntilTheLightIsInTheMiddle(); }},
    {"workspace", [](Scene& s) { s.load(); }},
    {"dragging", [](Scene& s) { s.select(48.2, 104.9); }},
    {"looping",
     [](Scene& s) {
       s.select(48.2, 79.6);
       s.editor().togglePreview();
       s.machine.players.back()->currentTime = 61.5;
       s.machine.timers.back()->fire();
     }},
    {"focused-handle",
     [](Scene& s) {
       s.select(48.2, 79.6);
       QCoreApplication::processEvents();
       s.focus(s.window->findChildren<HandleView*>().back());
     }},
    {"hovered-handle",
     [](Scene& s) {
       s.select(48.2, 79.6);
       QCoreApplication::processEvents();
       auto* const handle = s.window->findChildren<HandleView*>().back();
       QEnterEvent enter({}, {}, {});
       handle->setAttribute(Qt::WA_UnderMouse);
       QCoreApplication::sendEvent(handle, &enter);
     }},
    {"focused-button",
     [](Scene& s) {
       s.select(48.2, 79.6);
       QCoreApplication::processEvents();
       s.focus(s.window->findChild<WorkspaceScreen*>()->findChildren<ActionButton*>().back());
     }},
    {"exporting", [](Scene& s) { s.startExport(); }},
    {"done",
     [](Scene& s) {
       s.startExport();
       s.machine.sessions.back()->finish(platform::ExportStatus::completed);
       s.machine.settle();
     }},
    {"long-name",
     [](Scene& s) {
       s.select(48.2, 79.6);
       s.machine.savePanelAnswer = platform::FileURL(
           "/música/Sinfonía número 9 en re menor, opus 125, cuarto movimiento, con un título que "
           "no "
           "acaba nunca y sigue y sigue hasta el final.m4r");
       s.editor().export_();
       s.machine.sessions.back()->finish(platform::ExportStatus::completed);
       s.machine.settle();
     }},
    {"alert",
     [](Scene& s) {
       s.load();
       s.machine.songs["/música/Borrada.mp3"].openError =
           platform::Error("El archivo no existe o se ha movido (No such file or directory).");
       s.editor().load(platform::FileURL("/música/Borrada.mp3"));
       s.machine.settle();
     }},
};

/// One picture a state, into files that end in `kind`. False if one cannot be written.
bool write(const QString& folder, const QString& kind, int ratio) {
  for (const auto& [name, reach] : states) {
    Scene scene;
    reach(scene);
    const auto file = QStringLiteral("%1/%2-%3.png").arg(folder, QString::fromLatin1(name), kind);
    if (!scene.picture(ratio).save(file)) {
      qCritical("cannot write %s", qPrintable(file));
      return false;
    }
  }
  return true;
}

int run(const QString& folder) {
  const QPalette light = QApplication::palette();
  const QFont ordinary = QApplication::font();
  bool written = true;
  Appearance appearance;
  for (const bool dark : {false, true}) {
    appearance.isDark = dark;
    QApplication::setPalette(palette(appearance, light));
    const auto scheme = dark ? QStringLiteral("dark") : QStringLiteral("light");
    for (const int ratio : {1, 2})
      written = write(folder, QStringLiteral("%1-%2x").arg(scheme).arg(ratio), ratio) && written;
  }
  QApplication::setPalette(light);
  for (const double scale : {1.5, 2.0}) {
    appearance.textScale = scale;
    QApplication::setFont(font(appearance, ordinary));
    written = write(folder, QStringLiteral("text%1").arg(100 * scale), 1) && written;
  }
  return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace quibel

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
    qCritical("usage: %s folder", argv[0]);
    return EXIT_FAILURE;
  }
  return quibel::run(QString::fromLocal8Bit(argv[1]));
}
