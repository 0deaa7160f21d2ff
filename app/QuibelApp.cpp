#include "app/QuibelApp.h"

#include <QDebug>
#include <exception>

#include "app/ApplicationIcon.h"
#include "app/DesktopAppearance.h"
#include "app/Window.h"
#include "platform/desktop/Panels.h"
#include "platform/desktop/SpanishTexts.h"

namespace quibel {

QuibelApp::QuibelApp(int& argc, char** argv) : QApplication(argc, argv) {
  setApplicationName(QStringLiteral("quibel"));
  // The desktop entry's name, by which docks find the window's icon.
  setDesktopFileName(QStringLiteral("org.quibel.quibel"));
  setWindowIcon(applicationIcon());
  desktop::installSpanishTexts(*this);
  desktop::preparePanels();
}

int QuibelApp::run() {
  const DesktopAppearance appearance;
  Window window;
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
