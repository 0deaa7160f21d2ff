#include "app/QuibelApp.h"

#include <QDebug>
#include <QDir>
#include <exception>

#include "app/ApplicationIcon.h"
#include "app/DesktopAppearance.h"
#include "app/Window.h"
#include "desktop/SpanishTexts.h"

namespace quibel {

QuibelApp::QuibelApp(int& argc, char** argv) : QApplication(argc, argv) {
  setApplicationName(QStringLiteral("quibel"));
  // The desktop entry's name, by which docks find the window's icon.
  setDesktopFileName(QStringLiteral("org.quibel.quibel"));
  setWindowIcon(applicationIcon());
  desktop::installSpanishTexts(*this);
  // A working folder on a removable disk would keep it from being ejected.
  static_cast<void>(QDir::setCurrent(QDir::rootPath()));
}

int QuibelApp::run() {
  const DesktopSettings settings;
  const DesktopAppearance appearance(settings);
  Window window;
  connect(&settings, &DesktopSettings::read, &window, [&window](const SettingGroups& groups) {
    const auto layout = groups.value(settings::gnomeWindows).value(QStringLiteral("button-layout"));
    window.arrangeButtons(buttonLayout(layout.toString()));
  });
  window.show();
  return exec();
}

bool QuibelApp::notify(QObject* receiver, QEvent* event) {
  // Qt's loop is no place for an exception to pass through: what an event
  // handler could not do stays undone, and the window lives on.
  try {
    return QApplication::notify(receiver, event);
  } catch (const std::exception& error) {
    qCritical("Unhandled error: %s", error.what());
  } catch (...) {
    qCritical("Unhandled error");
  }
  return true;
}

}  // namespace quibel
